#include "Shared/Adwaita.h"
#include "support/VirtualScreen.h"
#include "window/ErrorWindow.h"

#include <gmock/gmock.h>

#include <chrono>
#include <string>

// On a desktop that draws no shadows, so that windows have edges of their own.
namespace {

using Dialogs::ErrorWindow;

// Runs the main loop until the window has been drawn a few times.
void WaitForFrames(GtkWidget* window) {
  int frames = 0;
  const auto count = [](GtkWidget* /*window*/, GdkFrameClock* /*clock*/, gpointer counter) -> gboolean {
    ++*static_cast<int*>(counter);
    return G_SOURCE_CONTINUE;
  };
  const guint id = gtk_widget_add_tick_callback(window, +count, &frames, nullptr);
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (frames < 6 && std::chrono::steady_clock::now() < deadline) {
    g_main_context_iteration(nullptr, FALSE);
  }
  gtk_widget_remove_tick_callback(window, id);
}

// How much of the content of such a window is out of view.
double HiddenOf(const std::string& reason) {
  ErrorWindow window({{"ErrorTitle", "The store cannot be verified"},
                      {"ErrorMessage", "The server’s certificate is not valid."},
                      {"ErrorReason", reason},
                      {"Server", "localhost:8443"},
                      {"DocumentPath", "/home/mia/expired.cr"}},
                     [] {});
  window.Present();
  WaitForFrames(window.Get("window"));
  GtkAdjustment* const scrolled =
      gtk_scrolled_window_get_vadjustment(window.Get<GtkScrolledWindow>("scroller"));
  return gtk_adjustment_get_upper(scrolled) - gtk_adjustment_get_page_size(scrolled);
}

TEST(ErrorWindowTest, OpensAsHighAsItsContent) {
  const TestSupport::VirtualScreen screen;
  screen.ShowOwnWindows();
  ASSERT_NE(gtk_init_check(), FALSE);
  adw_init();

  std::string reason = "It has expired:";
  for (int words = 0; words < 20; ++words) {
    EXPECT_EQ(HiddenOf(reason), 0) << reason;
    reason += " since the";
  }
}

}  // namespace

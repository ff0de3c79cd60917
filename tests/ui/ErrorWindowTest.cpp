#include "Shared/Owners.h"
#include "ui/DialogWindowTest.h"
#include "window/ErrorWindow.h"

#include <gmock/gmock.h>

#include <optional>
#include <string>

// On a desktop that draws no shadows, so that windows have edges of their own.
namespace {

using Dialogs::ErrorWindow;

class ErrorWindowTest : public DialogWindowTest {
 protected:
  static void WaitForFrames(GtkWidget* window);
  // How much of the content of such a window is out of view.
  [[nodiscard]] static double HiddenOf(const std::string& reason);
  // What a program that pastes gets.
  [[nodiscard]] static std::string Clipboard(const ErrorWindow& window);
  static void PressCopy(const ErrorWindow& window) { g_signal_emit_by_name(window.Get("copy"), "clicked"); }
  // As it is shown, the mnemonic's mark included.
  [[nodiscard]] static std::string LabelOfCopy(const ErrorWindow& window) {
    GtkLabel* const label = window.Get<GtkLabel>("copyLabel");
    EXPECT_NE(gtk_label_get_use_underline(label), FALSE);
    return gtk_label_get_label(label);
  }
};

// Runs the main loop until the window has been drawn a few times.
void ErrorWindowTest::WaitForFrames(GtkWidget* window) {
  int frames = 0;
  const auto count = [](GtkWidget* /*window*/, GdkFrameClock* /*clock*/, gpointer counter) -> gboolean {
    ++*static_cast<int*>(counter);
    return G_SOURCE_CONTINUE;
  };
  const guint id = gtk_widget_add_tick_callback(window, +count, &frames, nullptr);
  RunUntil([&frames] { return frames > 5; });
  gtk_widget_remove_tick_callback(window, id);
}

double ErrorWindowTest::HiddenOf(const std::string& reason) {
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

std::string ErrorWindowTest::Clipboard(const ErrorWindow& window) {
  std::optional<std::string> text;
  const auto take = [](GObject* clipboard, GAsyncResult* result, gpointer taken) {
    const Windows::TextPtr read(gdk_clipboard_read_text_finish(GDK_CLIPBOARD(clipboard), result, nullptr));
    *static_cast<std::optional<std::string>*>(taken) = read ? read.get() : "";
  };
  gdk_clipboard_read_text_async(gtk_widget_get_clipboard(window.Get("window")), nullptr, +take, &text);
  RunUntil([&text] { return text.has_value(); });
  return *text;
}

TEST_F(ErrorWindowTest, OpensAsHighAsItsContent) {
  std::string reason = "It has expired:";
  for (int words = 0; words < 20; ++words) {
    EXPECT_EQ(HiddenOf(reason), 0) << reason;
    reason += " since the";
  }
}

TEST_F(ErrorWindowTest, CopiesTheDetailsOfAllErrors) {
  ErrorWindow window({{"ErrorTitle", "No store"}, {"Server", "localhost:8443"}}, [] {});
  window.Add({{"ErrorTitle", "Another one"}, {"ErrorDetails", "certificate has expired"}});
  PressCopy(window);
  EXPECT_EQ(Clipboard(window), "No store\nServer: localhost:8443\n\nAnother one\ncertificate has expired\n");
}

TEST_F(ErrorWindowTest, OffersToCopyAgainWhenThereIsMore) {
  ErrorWindow window({{"ErrorTitle", "No store"}}, [] {});
  EXPECT_EQ(LabelOfCopy(window), "C_opy details");
  PressCopy(window);
  EXPECT_EQ(LabelOfCopy(window), "C_opied");
  window.Add({{"ErrorTitle", "Another one"}});
  EXPECT_EQ(LabelOfCopy(window), "C_opy details");
}

}  // namespace

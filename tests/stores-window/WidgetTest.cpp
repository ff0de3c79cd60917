#include "stores-window/WidgetTest.h"

#include <chrono>
#include <stdexcept>

namespace TestSupport {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kWaitLimit{20};
constexpr int kWidth = 400;
constexpr int kHeight = 300;

void Collect(GtkWidget* widget, const std::function<bool(GtkWidget*)>& isSuch,
             std::vector<GtkWidget*>& found) {
  if (isSuch(widget)) found.push_back(widget);
  for (GtkWidget* child = gtk_widget_get_first_child(widget); child != nullptr;
       child = gtk_widget_get_next_sibling(child)) {
    Collect(child, isSuch, found);
  }
}

}  // namespace

WidgetTest::WidgetTest() {
  screen_.ShowOwnWindows();
  if (gtk_init_check() == FALSE) throw std::runtime_error("no display");
  adw_init();
  window_ = GTK_WINDOW(gtk_window_new());
  gtk_window_set_default_size(window_, kWidth, kHeight);
}

WidgetTest::~WidgetTest() {
  gtk_window_destroy(window_);
}

void WidgetTest::Present(GtkWidget* widget) {
  gtk_window_set_child(window_, widget);
  gtk_window_present(window_);
  WaitForFrames();
}

void WidgetTest::WaitUntil(const std::function<bool()>& condition) {
  const Clock::time_point deadline = Clock::now() + kWaitLimit;
  while (!condition()) {
    if (Clock::now() > deadline) throw std::runtime_error("waited in vain");
    g_main_context_iteration(nullptr, FALSE);
  }
}

void WidgetTest::WaitForFrames() const {
  int frames = 0;
  const auto count = [](GtkWidget* /*window*/, GdkFrameClock* /*clock*/, gpointer counter) -> gboolean {
    ++*static_cast<int*>(counter);
    return G_SOURCE_CONTINUE;
  };
  const guint id = gtk_widget_add_tick_callback(GTK_WIDGET(window_), +count, &frames, nullptr);
  WaitUntil([&frames] { return frames > 3; });
  gtk_widget_remove_tick_callback(GTK_WIDGET(window_), id);
}

std::vector<GtkWidget*> WidgetTest::AllOf(GtkWidget* top, const std::function<bool(GtkWidget*)>& isSuch) {
  std::vector<GtkWidget*> found;
  Collect(top, isSuch, found);
  return found;
}

}  // namespace TestSupport

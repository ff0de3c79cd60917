#include "window/DialogWindow.h"

#include "Shared/Signals.h"

#include <algorithm>
#include <utility>

namespace Dialogs {

using namespace Windows;

namespace {

constexpr int kWidth = 480;
constexpr int kUsualResolution = 96 * 1024;
constexpr int kHighestContent = 640;

// As wide as lines of a usual length are, however large the text.
int Width(GtkWidget* widget) {
  int resolution = kUsualResolution;  // -1 when the desktop leaves it open
  g_object_get(gtk_widget_get_settings(widget), "gtk-xft-dpi", &resolution, nullptr);
  return resolution > 0 ? kWidth * resolution / kUsualResolution : kWidth;
}

int HeightOf(GtkWidget* widget) {
  int height = 0;
  gtk_widget_measure(widget, GTK_ORIENTATION_VERTICAL, Width(widget), nullptr, &height, nullptr, nullptr);
  return height;
}

}  // namespace

DialogWindow::DialogWindow(const char* interface, std::function<void()> onClosed)
    : parts_(interface), window_(parts_.Get<GtkWindow>("window")) {
  // The window is destroyed with this object, not by the toolkit.
  Signals::ConnectAnswered(window_, "close-request", [onClosed = std::move(onClosed)] {
    onClosed();
    return true;
  });
  // The toolkit stops showing the focus when no key has been pressed for a while, and the safe answer is to
  // be seen.
  Signals::ConnectChange(window_, "focus-visible", [this] {
    if (gtk_window_get_focus_visible(window_) == FALSE) gtk_window_set_focus_visible(window_, TRUE);
  });
}

DialogWindow::~DialogWindow() {
  gtk_window_destroy(window_);
}

void DialogWindow::Present() const {
  FitHeight();
  gtk_window_present(window_);
  gtk_window_set_focus_visible(window_, TRUE);
  FitHeightWhenLaidOut();
}

// What scrolls asks for the height of lines that are not wrapped, so its own does not count.
void DialogWindow::FitHeight() const {
  const int around = HeightOf(Get("frame")) - HeightOf(Get("scroller"));
  gtk_window_set_default_size(window_, Width(Get("frame")),
                              around + std::min(HeightOf(Get("content")), kHighestContent));
}

// The first layout brings back the height from before it, which content of the meantime may have changed.
void DialogWindow::FitHeightWhenLaidOut() const {
  Signals::Connect(gtk_native_get_surface(GTK_NATIVE(window_)), "layout", [this, isFirst = true]() mutable {
    if (std::exchange(isFirst, false)) FitHeight();
  });
}

void DialogWindow::Close() const {
  gtk_window_close(window_);
}

}  // namespace Dialogs

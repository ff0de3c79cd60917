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
constexpr int kUnbound = -1;  // the size across

// As wide as lines of a usual length are, however large the text.
int Width(GtkWidget* widget) {
  int resolution = kUsualResolution;  // -1 when the desktop leaves it open
  g_object_get(gtk_widget_get_settings(widget), "gtk-xft-dpi", &resolution, nullptr);
  return resolution > 0 ? kWidth * resolution / kUsualResolution : kWidth;
}

int Natural(GtkWidget* widget, GtkOrientation orientation, int across) {
  int size = 0;
  gtk_widget_measure(widget, orientation, across, nullptr, &size, nullptr, nullptr);
  return size;
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

// A window without a shadow has edges, which leave the content less room. What scrolls asks for the height of
// lines that are not wrapped, so its own does not count.
void DialogWindow::FitHeight() const {
  GtkWidget* const window = GTK_WIDGET(window_);
  const int width = Width(window);
  const int edges = Natural(window, GTK_ORIENTATION_HORIZONTAL, kUnbound) -
                    Natural(Get("frame"), GTK_ORIENTATION_HORIZONTAL, kUnbound);
  const int inside = width - edges;
  const int around = Natural(window, GTK_ORIENTATION_VERTICAL, width) -
                     Natural(Get("scroller"), GTK_ORIENTATION_VERTICAL, inside);
  const int content = Natural(Get("content"), GTK_ORIENTATION_VERTICAL, inside);
  gtk_window_set_default_size(window_, width, around + std::min(content, kHighestContent));
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

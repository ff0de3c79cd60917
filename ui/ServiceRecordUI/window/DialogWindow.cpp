#include "window/DialogWindow.h"

#include "Shared/Signals.h"

#include <utility>

DialogWindow::DialogWindow(const char* interface, std::function<void()> onClosed)
    : parts_(interface), window_(parts_.Get<GtkWindow>("window")) {
  // The window is destroyed with this object, not by the toolkit.
  Signals::ConnectAnswered(window_, "close-request", [onClosed = std::move(onClosed)] {
    onClosed();
    return true;
  });
}

DialogWindow::~DialogWindow() {
  gtk_window_destroy(window_);
}

void DialogWindow::Present() const {
  gtk_window_present(window_);
  gtk_window_set_focus_visible(window_, TRUE);
}

void DialogWindow::Close() const {
  gtk_window_close(window_);
}

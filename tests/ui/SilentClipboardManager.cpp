#include "ui/SilentClipboardManager.h"

#include <X11/Xlib.h>

#include <stdexcept>

namespace TestSupport {

struct SilentClipboardManager::Connection {
  explicit Connection(const std::string& name) : display(::XOpenDisplay(name.c_str())) {
    if (display == nullptr) throw std::runtime_error("no display " + name);
  }
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  ~Connection() { ::XCloseDisplay(display); }

  [[nodiscard]] Atom AtomOf(const char* name) const { return ::XInternAtom(display, name, 0); }

  Display* display;
};

SilentClipboardManager::SilentClipboardManager(const std::string& display)
    : connection_(std::make_unique<Connection>(display)) {
  Display* const screen = connection_->display;
  const Window window = ::XCreateSimpleWindow(screen, DefaultRootWindow(screen), 0, 0, 1, 1, 0, 0, 0);
  ::XSetSelectionOwner(screen, connection_->AtomOf("CLIPBOARD_MANAGER"), window, CurrentTime);
  ::XSync(screen, 0);
}

SilentClipboardManager::~SilentClipboardManager() = default;

bool SilentClipboardManager::IsAnythingCopied() const {
  return ::XGetSelectionOwner(connection_->display, connection_->AtomOf("CLIPBOARD")) != 0;
}

bool SilentClipboardManager::IsAsked() {
  while (::XPending(connection_->display) > 0) {
    XEvent event;
    ::XNextEvent(connection_->display, &event);
    isAsked_ = isAsked_ || event.type == SelectionRequest;
  }
  return isAsked_;
}

}  // namespace TestSupport

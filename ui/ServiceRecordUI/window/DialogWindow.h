#pragma once

#include "Shared/Interface.h"

#include <functional>

namespace Dialogs {

// A dialog's window, designed in a `.ui` file with the objects "window", "frame", "scroller" and "content",
// each in the one before. Closing it, by Escape, by the desktop or by Close, ends it. One thread.
class DialogWindow {
 public:
  DialogWindow(const char* interface, std::function<void()> onClosed);
  ~DialogWindow();
  DialogWindow(const DialogWindow&) = delete;
  DialogWindow& operator=(const DialogWindow&) = delete;

  [[nodiscard]] const Windows::Interface& Parts() const { return parts_; }
  template <class Object = GtkWidget>
  [[nodiscard]] Object* Get(const char* id) const {
    return parts_.Get<Object>(id);
  }

  // Shows it, with the ring around what has the focus.
  void Present() const;
  void Close() const;

 protected:
  // Makes the window as high as its content needs, as far as a screen has room; the rest scrolls.
  void FitHeight() const;

 private:
  void FitHeightWhenLaidOut() const;

  Windows::Interface parts_;
  GtkWindow* window_;  // of the toolkit until it is destroyed
};

}  // namespace Dialogs

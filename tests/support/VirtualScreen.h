#pragma once

#include "support/ChildProcess.h"

#include <string>
#include <vector>

namespace TestSupport {

// An X server without a screen, on a display of its own. It ends with this object. One thread.
class VirtualScreen {
 public:
  VirtualScreen();

  // What programs need to show their windows there, as NAME=value.
  [[nodiscard]] std::vector<std::string> Environment() const {
    return {"DISPLAY=" + display_, "GDK_BACKEND=x11"};
  }
  // From now on windows of this process are shown there, without assistive technologies and a session bus.
  void ShowOwnWindows() const;
  // The display's name (":1").
  [[nodiscard]] const std::string& Display() const { return display_; }
  // Presses and releases a key ("Tab", "Return", "Escape") on the keyboard.
  void Type(const std::string& key) const;
  // Types the characters one after the other.
  void Write(const std::string& text) const;
  // Gives the keyboard to the window with that title, which is there.
  void Focus(const std::string& title) const;

 private:
  void Use(const std::vector<std::string>& actions) const;

  ChildProcess server_;
  std::string display_;
};

}  // namespace TestSupport

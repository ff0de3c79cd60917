#pragma once

#include "support/ChildProcess.h"
#include "support/TemporaryFolder.h"

#include <string>
#include <vector>

namespace TestSupport {

// A Wayland compositor without a screen, a keyboard and a pointer. It ends with this object.
class WaylandScreen {
 public:
  WaylandScreen();

  // What programs need to show their windows there, as NAME=value.
  [[nodiscard]] std::vector<std::string> Environment() const {
    return {"WAYLAND_DISPLAY=" + (folder_.Path() / kSocket).string(), "GDK_BACKEND=wayland"};
  }

 private:
  static constexpr char kSocket[] = "screen";

  const TemporaryFolder folder_;
  ChildProcess compositor_;
};

}  // namespace TestSupport

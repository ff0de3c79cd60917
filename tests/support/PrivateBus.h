#pragma once

#include "support/ChildProcess.h"
#include "support/TemporaryFolder.h"

#include <string>

namespace TestSupport {

// A session bus of the test's own.
class PrivateBus {
 public:
  PrivateBus();

  [[nodiscard]] std::string Address() const { return "unix:path=" + (folder_.Path() / "bus").string(); }
  // Until it goes on, it takes connections but says nothing.
  void Pause();
  void GoOn();
  // Everybody on the bus loses it.
  void Terminate();

 private:
  const TemporaryFolder folder_;
  ChildProcess daemon_;
};

}  // namespace TestSupport

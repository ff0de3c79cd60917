#pragma once

#include "support/OwnedDescriptor.h"

#include <cstdint>

namespace testsupport {

// A TCP socket that listens on a free port of 127.0.0.1. Connections queue from the moment on which it
// exists.
struct LoopbackListener {
  // Throws std::system_error.
  LoopbackListener();

  OwnedDescriptor socket;
  std::uint16_t port = 0;
};

}  // namespace testsupport

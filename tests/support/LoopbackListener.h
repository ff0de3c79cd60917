#pragma once

#include "libs/Files/FileDescriptor.h"

#include <cstdint>

namespace TestSupport {

// A TCP socket that listens on a free port of 127.0.0.1. Connections queue from the moment on which it
// exists.
struct LoopbackListener {
  // Throws std::system_error.
  LoopbackListener();

  Files::FileDescriptor socket;
  std::uint16_t port = 0;
};

}  // namespace TestSupport

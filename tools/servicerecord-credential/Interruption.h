#pragma once

#include "libs/Files/FileDescriptor.h"

namespace Credential {

// SIGINT, SIGTERM and SIGHUP as an event instead of the program's sudden end, so that a terminal gets its
// mode back. Made before any thread starts.
class Interruption {
 public:
  Interruption();

  // Readable when one of the signals has come; -1 when there was no descriptor to be had.
  [[nodiscard]] int Descriptor() const { return signals_.Get(); }

 private:
  Files::FileDescriptor signals_;
};

}  // namespace Credential

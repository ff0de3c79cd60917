#pragma once

#include "libs/FileDescriptor/FileDescriptor.h"

namespace Wayfinding {

// A descriptor that becomes readable when any thread raises the event, and stays so until it is cleared.
class WakeEvent {
 public:
  // Throws std::system_error when there is no descriptor to be had.
  WakeEvent();

  [[nodiscard]] int Descriptor() const { return event_.Get(); }
  void Raise() const noexcept;
  void Clear() const noexcept;

 private:
  FileDescriptor event_;
};

}  // namespace Wayfinding

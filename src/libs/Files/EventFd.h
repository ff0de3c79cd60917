#pragma once

#include "libs/Files/FileDescriptor.h"

namespace Files {

// A descriptor that becomes readable when any thread raises the event, and stays so until it is cleared.
class EventFd {
 public:
  // Throws std::system_error when there is no descriptor to be had.
  EventFd();

  [[nodiscard]] int Descriptor() const { return event_.Get(); }
  void Raise() const noexcept;
  void Clear() const noexcept;

 private:
  FileDescriptor event_;
};

}  // namespace Files

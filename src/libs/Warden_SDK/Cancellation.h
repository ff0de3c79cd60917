#pragma once

#include "libs/Files/EventFd.h"

namespace Warden {

// Whether requests are cancelled, which is for good. Any thread. Making it throws std::system_error when
// there is no descriptor to be had.
class Cancellation {
 public:
  // Readable from the cancellation on; only to be polled.
  [[nodiscard]] int Descriptor() const { return event_.Descriptor(); }
  [[nodiscard]] bool Requested() const;

  void Request() const { event_.Raise(); }

 private:
  Files::EventFd event_;
};

}  // namespace Warden

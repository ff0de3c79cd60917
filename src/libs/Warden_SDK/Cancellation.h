#pragma once

#include "libs/Files/FileDescriptor.h"

namespace Warden {

// Whether requests are cancelled, which is for good. Any thread.
class Cancellation {
 public:
  Cancellation();

  // False when there was no descriptor to be had: nothing can be cancelled then.
  [[nodiscard]] bool IsUsable() const { return static_cast<bool>(event_); }
  // Readable from the cancellation on; only to be polled.
  [[nodiscard]] int Descriptor() const { return event_.Get(); }
  [[nodiscard]] bool Requested() const;

  void Request() const;

 private:
  Files::FileDescriptor event_;
};

}  // namespace Warden

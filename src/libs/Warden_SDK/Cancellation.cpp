#include "libs/Warden_SDK/Cancellation.h"

#include <poll.h>
#include <sys/eventfd.h>

namespace Warden {

Cancellation::Cancellation() : event_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

bool Cancellation::Requested() const {
  pollfd state{event_.Get(), POLLIN, 0};
  return ::poll(&state, 1, 0) > 0;
}

void Cancellation::Request() const {
  ::eventfd_write(event_.Get(), 1);
}

}  // namespace Warden

#include "libs/Warden_SDK/Cancellation.h"

#include <poll.h>

namespace Warden {

bool Cancellation::Requested() const {
  pollfd state{Descriptor(), POLLIN, 0};
  return ::poll(&state, 1, 0) > 0;
}

}  // namespace Warden

#include "libs/Wayfinder/WakeEvent.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace Wayfinding {

WakeEvent::WakeEvent() : descriptor_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  if (descriptor_ < 0) throw std::system_error(errno, std::generic_category(), "eventfd");
}

WakeEvent::~WakeEvent() {
  ::close(descriptor_);
}

void WakeEvent::Raise() const noexcept {
  eventfd_write(descriptor_, 1);
}

void WakeEvent::Clear() const noexcept {
  eventfd_t count = 0;
  eventfd_read(descriptor_, &count);
}

}  // namespace Wayfinding

#include "libs/Files/EventFd.h"

#include <sys/eventfd.h>

#include <cerrno>
#include <system_error>

namespace Files {

EventFd::EventFd() : event_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  if (!event_) throw std::system_error(errno, std::generic_category(), "eventfd");
}

void EventFd::Raise() const noexcept {
  eventfd_write(event_.Get(), 1);
}

void EventFd::Clear() const noexcept {
  eventfd_t count = 0;
  eventfd_read(event_.Get(), &count);
}

}  // namespace Files

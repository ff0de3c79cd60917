#include "TerminationEvent.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <system_error>

namespace TerminationEvent {
namespace {

int MakeDescriptor() {
  const int descriptor = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  if (descriptor < 0) throw std::system_error(errno, std::generic_category(), "eventfd");
  return descriptor;
}

// Made before main, so that a signal handler only reads it.
const int g_descriptor = MakeDescriptor();

void HandleSignal(int /*signal*/) {
  Request();
}

}  // namespace

int Descriptor() {
  return g_descriptor;
}

bool Requested() {
  pollfd state{g_descriptor, POLLIN, 0};
  return ::poll(&state, 1, 0) > 0;
}

void Request() noexcept {
  const int savedError = errno;
  eventfd_write(g_descriptor, 1);
  errno = savedError;
}

void RaiseOnSignals() {
  struct sigaction action {};
  action.sa_handler = HandleSignal;
  action.sa_flags = SA_RESTART;
  ::sigaction(SIGTERM, &action, nullptr);
  ::sigaction(SIGINT, &action, nullptr);
}

}  // namespace TerminationEvent

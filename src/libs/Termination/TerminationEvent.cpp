#include "libs/Termination/TerminationEvent.h"

#include "libs/Files/EventFd.h"
#include "libs/Files/FileDescriptor.h"
#include "libs/Files/SystemError.h"
#include "libs/Lifetime/NoDestructor.h"

#include <poll.h>
#include <sys/epoll.h>
#include <sys/signalfd.h>

#include <csignal>
#include <system_error>

namespace Termination {
namespace {

Files::FileDescriptor Checked(int descriptor, const char* what) {
  if (descriptor < 0) throw std::system_error(Files::LastError(), what);
  return Files::FileDescriptor(descriptor);
}

// Readable as soon as one of its sources is, and for as long.
class Event {
 public:
  Event() : any_(Checked(::epoll_create1(EPOLL_CLOEXEC), "epoll_create1")) { Add(request_.Descriptor()); }

  [[nodiscard]] int Descriptor() const { return any_.Get(); }
  void Request() const { request_.Raise(); }

  // A signal that is pending and never read keeps its descriptor readable.
  void Watch(const sigset_t& signals) {
    signals_ = Checked(::signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK), "signalfd");
    Add(signals_.Get());
  }

 private:
  void Add(int source) const {
    epoll_event interest{};
    interest.events = EPOLLIN;
    if (::epoll_ctl(any_.Get(), EPOLL_CTL_ADD, source, &interest) != 0) {
      throw std::system_error(Files::LastError(), "epoll_ctl");
    }
  }

  const Files::FileDescriptor any_;
  const Files::EventFd request_;
  Files::FileDescriptor signals_;
};

// Threads may still watch it while the process exits.
Event& TheEvent() {
  static Lifetime::NoDestructor<Event> event;
  return *event;
}

}  // namespace

int Descriptor() {
  return TheEvent().Descriptor();
}

bool Requested() {
  pollfd state{Descriptor(), POLLIN, 0};
  return ::poll(&state, 1, 0) > 0;
}

void Request() {
  TheEvent().Request();
}

void RaiseOnSignals() {
  sigset_t signals;
  ::sigemptyset(&signals);
  ::sigaddset(&signals, SIGTERM);
  ::sigaddset(&signals, SIGINT);
  // Blocked, they stay pending even where a shell has had them ignored.
  ::pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  TheEvent().Watch(signals);
}

}  // namespace Termination

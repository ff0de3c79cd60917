#include "libs/Termination/TerminationEvent.h"

#include "libs/Files/FileDescriptor.h"
#include "libs/Files/SystemError.h"

#include <poll.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>

#include <csignal>
#include <system_error>

namespace TerminationEvent {
namespace {

FileDescriptor Checked(int descriptor, const char* what) {
  if (descriptor < 0) throw std::system_error(LastError(), what);
  return FileDescriptor(descriptor);
}

// Readable as soon as one of its sources is, and for as long.
class Event {
 public:
  // Never destroyed: threads may still watch it while the process exits.
  static Event& Instance() {
    static Event& event = *new Event;
    return event;
  }

  [[nodiscard]] int Descriptor() const { return any_.Get(); }
  void Request() const { ::eventfd_write(request_.Get(), 1); }

  // A signal that is pending and never read keeps its descriptor readable.
  void Watch(const sigset_t& signals) {
    signals_ = Checked(::signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK), "signalfd");
    Add(signals_);
  }

 private:
  Event()
      : any_(Checked(::epoll_create1(EPOLL_CLOEXEC), "epoll_create1")),
        request_(Checked(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK), "eventfd")) {
    Add(request_);
  }

  void Add(const FileDescriptor& source) const {
    epoll_event interest{};
    interest.events = EPOLLIN;
    if (::epoll_ctl(any_.Get(), EPOLL_CTL_ADD, source.Get(), &interest) != 0) {
      throw std::system_error(LastError(), "epoll_ctl");
    }
  }

  const FileDescriptor any_;
  const FileDescriptor request_;
  FileDescriptor signals_;
};

}  // namespace

int Descriptor() {
  return Event::Instance().Descriptor();
}

bool Requested() {
  pollfd state{Descriptor(), POLLIN, 0};
  return ::poll(&state, 1, 0) > 0;
}

void Request() {
  Event::Instance().Request();
}

void RaiseOnSignals() {
  sigset_t signals;
  ::sigemptyset(&signals);
  ::sigaddset(&signals, SIGTERM);
  ::sigaddset(&signals, SIGINT);
  // Blocked, they stay pending even where a shell has had them ignored.
  ::pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  Event::Instance().Watch(signals);
}

}  // namespace TerminationEvent

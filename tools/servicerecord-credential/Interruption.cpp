#include "Interruption.h"

#include <sys/signalfd.h>

#include <csignal>

namespace Credential {

Interruption::Interruption() {
  sigset_t signals;
  ::sigemptyset(&signals);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) ::sigaddset(&signals, signal);
  signals_ = Files::FileDescriptor(::signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK));
  if (signals_) ::pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

}  // namespace Credential

#include "support/PrivateBus.h"

#include <csignal>

namespace TestSupport {

PrivateBus::PrivateBus()
    : daemon_({"dbus-daemon", "--session", "--nofork", "--nosyslog", "--address=" + Address(),
               "--print-address"}) {
  daemon_.WaitForOutput("unix:path=");
}

void PrivateBus::Pause() {
  daemon_.Signal(SIGSTOP);
}

void PrivateBus::GoOn() {
  daemon_.Signal(SIGCONT);
}

void PrivateBus::Terminate() {
  daemon_.Signal(SIGTERM);
  daemon_.Wait();
}

}  // namespace TestSupport

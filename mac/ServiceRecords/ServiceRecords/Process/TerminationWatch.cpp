#include "Process/TerminationWatch.h"

#include "libs/Termination/TerminationEvent.h"

#include <poll.h>

#include <thread>
#include <utility>

namespace Agent::TerminationWatch {
namespace {

void AwaitTermination() {
  pollfd termination{Termination::Descriptor(), POLLIN, 0};
  while (::poll(&termination, 1, -1) <= 0) {
  }
}

}  // namespace

void Start(std::chrono::milliseconds timeToEnd, std::function<void()> end) {
  std::thread([timeToEnd, limitReached = std::move(end)] {
    AwaitTermination();
    std::this_thread::sleep_for(timeToEnd);
    limitReached();
  }).detach();
}

}  // namespace Agent::TerminationWatch

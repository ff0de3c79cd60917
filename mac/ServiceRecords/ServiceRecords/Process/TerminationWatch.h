#pragma once

#include <chrono>
#include <functional>

// The limit on how long the process takes to end. The main thread cannot keep it: it may be waiting for a bus
// that does not answer, or at the start for a disk.
namespace Agent::TerminationWatch {

// From now on, `end` is called once the time is over after termination was requested, on a thread of its own
// and even while the process exits. Main thread, after TerminationEvent::RaiseOnSignals. Throws
// std::system_error.
void Start(std::chrono::milliseconds timeToEnd, std::function<void()> end);

}  // namespace Agent::TerminationWatch

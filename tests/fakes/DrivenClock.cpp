#include "fakes/DrivenClock.h"

#include "SRLib/Platform/Waiting.h"

#include <stdexcept>

namespace {

testsupport::DrivenClock* g_clock = nullptr;

}  // namespace

namespace testsupport {

DrivenClock::DrivenClock() {
  g_clock = this;
}

DrivenClock::~DrivenClock() {
  g_clock = nullptr;
}

bool DrivenClock::Pass() {
  ++seconds_;
  return !passed_ || passed_(seconds_);
}

}  // namespace testsupport

bool util::WaitOneSecond() {
  if (g_clock == nullptr) throw std::logic_error("nothing was expected to wait");
  return g_clock->Pass();
}

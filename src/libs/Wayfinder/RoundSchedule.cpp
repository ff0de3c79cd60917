#include "libs/Wayfinder/RoundSchedule.h"

#include "libs/Wayfinder/RetryDelay.h"

#include <algorithm>

namespace Wayfinding {

void RoundSchedule::TakeNetworkEvent(TimePoint now) {
  if (!gatheringSince_) gatheringSince_ = now;
}

bool RoundSchedule::TakeLook(TimePoint now) {
  if (!gatheringSince_ || now < *gatheringSince_ + kGatheringTime) return false;
  lastEvent_ = *gatheringSince_;
  gatheringSince_.reset();
  return true;
}

void RoundSchedule::TakeLoss() {
  running_ = false;
  start_.reset();
}

void RoundSchedule::StartAt(TimePoint when, TimePoint deadline) {
  start_ = when;
  startDeadline_ = deadline;
  startRepeats_ = false;
}

void RoundSchedule::TakeNewNetwork(TimePoint now) {
  attempts_ = 0;
  StartAt(now, lastEvent_ + kRoundTime);
}

void RoundSchedule::TakeNewStores(TimePoint now) {
  attempts_ = 0;
  StartAt(now, now + kRoundTime);
}

void RoundSchedule::TakeOldAge(TimePoint now) {
  if (!running_ || isRepetition_) StartAt(now, now + kRoundTime);
}

bool RoundSchedule::TakeStart(TimePoint now) {
  if (!start_ || now < *start_) return false;
  start_.reset();
  deadline_ = startDeadline_;
  isRepetition_ = startRepeats_;
  running_ = true;
  return true;
}

void RoundSchedule::TakeEnd() {
  running_ = false;
  attempts_ = 0;
}

std::chrono::milliseconds RoundSchedule::TakeFailure(TimePoint now, double chance, bool withNewStore) {
  if (withNewStore) attempts_ = 0;
  const std::chrono::milliseconds delay = RetryDelay(attempts_++, chance);
  running_ = false;
  StartAt(now + delay, now + delay + kRoundTime);
  startRepeats_ = true;
  return delay;
}

void RoundSchedule::Stop() {
  *this = {};
}

std::optional<RoundSchedule::TimePoint> RoundSchedule::NextDue() const {
  TimePoint due = TimePoint::max();
  if (gatheringSince_) due = std::min(due, *gatheringSince_ + kGatheringTime);
  if (start_) due = std::min(due, *start_);
  if (running_) due = std::min(due, deadline_);
  if (due == TimePoint::max()) return std::nullopt;
  return due;
}

}  // namespace Wayfinding

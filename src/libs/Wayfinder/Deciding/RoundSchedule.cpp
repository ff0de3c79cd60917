#include "libs/Wayfinder/Deciding/RoundSchedule.h"

#include "libs/Wayfinder/Deciding/RetryDelay.h"

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

void RoundSchedule::StartAt(TimePoint when, TimePoint deadline, Scope scope) {
  start_ = when;
  startDeadline_ = deadline;
  startScope_ = scope;
  if (scope != Scope::Further) repetition_.reset();
}

void RoundSchedule::TakeNewNetwork(TimePoint now) {
  attempts_ = 0;
  StartAt(now, lastEvent_ + kRoundTime, Scope::All);
}

void RoundSchedule::TakeNewStores(TimePoint now) {
  attempts_ = 0;
  StartAt(now, now + kRoundTime, Scope::All);
}

void RoundSchedule::TakeFurtherStores(TimePoint now) {
  if (start_ && startScope_ == Scope::WithoutAnswer) repetition_ = start_;
  StartAt(now, now + kRoundTime, Scope::Further);
}

void RoundSchedule::TakeOldAge(TimePoint now) {
  if (!running_ || scope_ != Scope::All) StartAt(now, now + kRoundTime, Scope::All);
}

bool RoundSchedule::TakeStart(TimePoint now) {
  if (!start_ || now < *start_) return false;
  start_.reset();
  deadline_ = startDeadline_;
  scope_ = startScope_;
  running_ = true;
  return true;
}

void RoundSchedule::TakeEnd() {
  running_ = false;
  attempts_ = 0;
  repetition_.reset();
}

std::chrono::milliseconds RoundSchedule::TakeFailure(TimePoint now, double chance, bool withNewStore) {
  running_ = false;
  if (withNewStore) attempts_ = 0;
  const bool isPlanned = !withNewStore && repetition_;
  const TimePoint when = isPlanned ? std::max(now, *repetition_)
                                   : now + std::chrono::milliseconds(RetryDelay(attempts_++, chance));
  StartAt(when, when + kRoundTime, Scope::WithoutAnswer);
  return std::chrono::ceil<std::chrono::milliseconds>(when - now);
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

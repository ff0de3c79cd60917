#include "libs/Wayfinder/Deciding/RoundSchedule.h"

#include "libs/RetryDelay/RetryDelay.h"

#include <algorithm>

namespace Wayfinding {
namespace {

using std::chrono::milliseconds;

milliseconds SpreadDelay(unsigned int attempt, double chance) {
  constexpr double kSpread = 0.3;
  const double spread = 1 - kSpread + 2 * kSpread * chance;
  return std::chrono::duration_cast<milliseconds>(RetryDelay(attempt) * spread);
}

}  // namespace

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
  repetition_.reset();
}

void RoundSchedule::TakeNewNetwork(TimePoint now) {
  attempts_ = 0;
  start_ = {.when = now, .scope = Scope::All, .deadline = lastEvent_ + kRoundTime};
}

void RoundSchedule::TakeNewStores(TimePoint now) {
  attempts_ = 0;
  start_ = {.when = now, .scope = Scope::All, .deadline = now + kRoundTime};
}

void RoundSchedule::TakeFurtherStores(TimePoint now) {
  start_ = {.when = now, .scope = Scope::Further, .deadline = now + kRoundTime};
}

void RoundSchedule::TakeOldAge(TimePoint now) {
  if (!running_ || scope_ != Scope::All)
    start_ = {.when = now, .scope = Scope::All, .deadline = now + kRoundTime};
}

bool RoundSchedule::TakeStart(TimePoint now) {
  std::optional<Start> next = start_;
  if (!next && !running_ && repetition_)
    next = {.when = *repetition_, .scope = Scope::WithoutAnswer, .deadline = *repetition_ + kRoundTime};
  if (!next || now < next->when) return false;
  start_.reset();
  if (next->scope != Scope::Further) repetition_.reset();
  scope_ = next->scope;
  deadline_ = next->deadline;
  running_ = true;
  return true;
}

void RoundSchedule::TakeEnd() {
  running_ = false;
  attempts_ = 0;
  repetition_.reset();
}

milliseconds RoundSchedule::TakeFailure(TimePoint now, double chance, bool withNewStore) {
  running_ = false;
  if (withNewStore) {
    attempts_ = 0;
    repetition_.reset();
  }
  repetition_ = std::max(now, repetition_ ? *repetition_ : now + SpreadDelay(attempts_++, chance));
  return std::chrono::ceil<milliseconds>(*repetition_ - now);
}

void RoundSchedule::Stop() {
  *this = {};
}

std::optional<RoundSchedule::TimePoint> RoundSchedule::NextDue() const {
  TimePoint due = TimePoint::max();
  if (gatheringSince_) due = std::min(due, *gatheringSince_ + kGatheringTime);
  if (start_) due = std::min(due, start_->when);
  if (running_) due = std::min(due, deadline_);
  if (!running_ && repetition_) due = std::min(due, *repetition_);
  if (due == TimePoint::max()) return std::nullopt;
  return due;
}

}  // namespace Wayfinding

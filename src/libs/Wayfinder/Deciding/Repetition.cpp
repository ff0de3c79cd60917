#include "libs/Wayfinder/Deciding/Repetition.h"

#include "libs/RetryDelay/RetryDelay.h"

#include <algorithm>

namespace Wayfinding {
namespace {

using std::chrono::milliseconds;

milliseconds SpreadDelay(unsigned int attempt, double chance) {
  constexpr double kSpread = 0.3;
  const double spread = 1 - kSpread + 2 * kSpread * chance;
  return std::chrono::duration_cast<milliseconds>(util::RetryDelay(attempt) * spread);
}

}  // namespace

milliseconds Repetition::Plan(TimePoint now, double chance) {
  if (!due_) due_ = now + SpreadDelay(attempts_++, chance);
  return std::chrono::ceil<milliseconds>(std::max(*due_ - now, TimePoint::duration(0)));
}

bool Repetition::Take(TimePoint now) {
  if (!due_ || now < *due_) return false;
  due_.reset();
  return true;
}

}  // namespace Wayfinding

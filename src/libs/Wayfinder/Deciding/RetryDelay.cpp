#include "libs/Wayfinder/Deciding/RetryDelay.h"

#include "libs/RetryDelay/RetryDelay.h"

namespace Wayfinding {

std::chrono::milliseconds RetryDelay(unsigned int attempt, double chance) {
  constexpr double kSpread = 0.3;
  const double spread = 1 - kSpread + 2 * kSpread * chance;
  const auto seconds = static_cast<double>(::RetryDelay(attempt).count());
  return std::chrono::milliseconds(static_cast<long long>(seconds * spread * 1000));
}

}  // namespace Wayfinding

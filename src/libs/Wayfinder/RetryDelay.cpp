#include "libs/Wayfinder/RetryDelay.h"

#include <algorithm>

namespace Wayfinding {

std::chrono::milliseconds RetryDelay(unsigned int attempt, double chance) {
  constexpr double kLongestSeconds = 300;
  constexpr double kSpread = 0.3;
  const double seconds = std::min(static_cast<double>(1ULL << std::min(attempt, 16U)), kLongestSeconds);
  const double spread = 1 - kSpread + 2 * kSpread * chance;
  return std::chrono::milliseconds(static_cast<long long>(seconds * spread * 1000));
}

}  // namespace Wayfinding

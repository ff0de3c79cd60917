#pragma once

#include <algorithm>
#include <chrono>

namespace util {

// How long to wait before something that failed is tried again: 1, 2, 4 ... up to 300 s. `attempt`: the
// failures before this one.
[[nodiscard]] constexpr std::chrono::seconds RetryDelay(unsigned int attempt) {
  constexpr std::chrono::seconds kLongest{300};
  constexpr unsigned int kEnoughToPass = 16;
  return std::min(std::chrono::seconds(1LL << std::min(attempt, kEnoughToPass)), kLongest);
}

}  // namespace util

#pragma once

#include <chrono>

namespace Wayfinding {

// How long to wait after a round without any answer: 1, 2, 4 ... up to 300 s, each 30 percent more or less by
// chance, so that many machines do not ask at the same time. `attempt`: the rounds without an answer before
// this one. `chance`: evenly spread over [0, 1).
[[nodiscard]] std::chrono::milliseconds RetryDelay(unsigned int attempt, double chance);

}  // namespace Wayfinding

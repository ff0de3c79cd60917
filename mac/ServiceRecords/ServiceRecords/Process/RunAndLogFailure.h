#pragma once

#include <functional>

namespace Agent {

// Does a piece of work whose failure must end that alone. What it throws is written to the system log, as the
// failure of `what`.
void RunAndLogFailure(const char* what, const std::function<void()>& work);

}  // namespace Agent

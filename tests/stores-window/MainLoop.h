#pragma once

#include <functional>

namespace Stores {

// Runs the main loop of this thread until the condition holds. False when it does not within half a minute.
[[nodiscard]] bool RunUntil(const std::function<bool()>& condition);
// Runs what is ready to be run.
void RunPending();

}  // namespace Stores

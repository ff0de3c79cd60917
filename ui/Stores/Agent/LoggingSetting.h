#pragma once

#include "Agent/GLibHandles.h"

#include <functional>

// Whether the agent writes its log: a preference of the user, in a file. The thread of the main context.
namespace Stores::LoggingSetting {

[[nodiscard]] bool IsOn();

// Saves it off the main loop, where a disk may take its time; `done` is called from the main loop unless it
// was cancelled, with whether that could be done.
void Set(bool on, GCancellable* cancellable, const std::function<void(bool saved)>& done);

}  // namespace Stores::LoggingSetting

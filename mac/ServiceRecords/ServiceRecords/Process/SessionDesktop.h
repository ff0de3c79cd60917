#pragma once

#include "libs/Display/DisplayVariables.h"

namespace Agent {

// The user's desktop as it is now: what the desktop has told the service manager, from which a program gets
// it that is started anew. Empty where there is no service manager, or it knows of no desktop. Waits for it;
// any thread.
[[nodiscard]] Display::Variables SessionDesktop();

}  // namespace Agent

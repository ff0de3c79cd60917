#pragma once

#include "libs/Bus/Connection.h"

#include <optional>
#include <string>

namespace Srctl {

// A connection to the user's session bus; nothing, and the reason in `problem`, when there is none.
[[nodiscard]] std::optional<Bus::Connection> OpenUserBus(std::string& problem);

}  // namespace Srctl

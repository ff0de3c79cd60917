#pragma once

#include "libs/Bus/SdBus.h"

#include <string>

namespace TestSupport {

// Throws std::system_error, with `what`, for a negative result of the bus's library.
void CheckBus(int result, const std::string& what);

// A connection of its own to the bus at the address. Throws std::system_error on failure.
[[nodiscard]] Bus::BusPtr ConnectToBus(const std::string& address);

}  // namespace TestSupport

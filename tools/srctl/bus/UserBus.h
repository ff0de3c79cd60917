#pragma once

#include "libs/Bus/SdBus.h"

#include <string>

// A connection to the user's session bus; null, and the reason in `problem`, when there is none.
[[nodiscard]] BusPtr OpenUserBus(std::string& problem);

// What sd_bus_add_match takes for the bus name getting an owner or losing its owner.
[[nodiscard]] std::string MatchOwnerOf(const std::string& busName);

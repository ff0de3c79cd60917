#pragma once

#include "SdBus.h"

#include <string>

// A connection to the user's session bus; null, and the reason in `problem`, when there is none.
[[nodiscard]] BusPtr OpenUserBus(std::string& problem);

// Matches for sd_bus_add_match.
namespace busmatches {

// A notification of that name.
[[nodiscard]] std::string Notification(const std::string& name);
// The bus name gets an owner or loses its owner.
[[nodiscard]] std::string OwnerOf(const std::string& busName);

}  // namespace busmatches

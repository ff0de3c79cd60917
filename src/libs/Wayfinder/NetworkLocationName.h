#pragma once

#include "libs/Wayfinder/Wayfinder.h"

#include <cstdint>

namespace Wayfinding {

// The name of a network location value, in the log and wherever else a program reads it.
[[nodiscard]] constexpr const char* NetworkLocationName(std::uint64_t location) {
  switch (location) {
    case Wayfinder::kDeciding:
      return "NETWORK_LOCATION_DECIDING";
    case Wayfinder::kLAN:
      return "NETWORK_LOCATION_LAN";
    case Wayfinder::kOutside:
      return "NETWORK_LOCATION_OUTSIDE";
    case Wayfinder::kNone:
      return "NETWORK_LOCATION_NONE";
    case Wayfinder::kVPN:
      return "NETWORK_LOCATION_VPN";
    case Wayfinder::kHotspot:
      return "NETWORK_LOCATION_HOTSPOT";
    case Wayfinder::kPartlyInternal:
      return "NETWORK_LOCATION_PARTLY_INTERNAL";
    default:
      return "NETWORK_LOCATION_UNDEFINED";
  }
}

}  // namespace Wayfinding

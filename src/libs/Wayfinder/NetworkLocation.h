#pragma once

#include <cstdint>
#include <string>

namespace Wayfinding {

// Where this machine stands relative to a store. The values are the interface's.
enum class NetworkLocation : std::uint32_t {
  Deciding = 0,
  LAN = 1,
  Outside = 2,
  None = 3,
  VPN = 4,
  Hotspot = 5,
  PartlyInternal = 6,
};

struct LocationDecision {
  NetworkLocation location = NetworkLocation::Deciding;
  std::string reason = {};  // begins with the location, "LAN, 2 of 2 internal beacons answered"
};

}  // namespace Wayfinding

#pragma once

#include <cstdint>
#include <string>

namespace Wayfinding {

// Where this machine stands relative to a store. The values are the interface's.
enum NetworkLocation : std::uint32_t {
  kDeciding = 0,
  kLAN = 1,
  kOutside = 2,
  kNone = 3,
  kVPN = 4,
  kHotspot = 5,
  kPartlyInternal = 6,
};

struct LocationDecision {
  NetworkLocation location = kDeciding;
  // Why it is this one, in a line of UTF-8: "LAN, 2 of 2 internal beacons answered". Empty for kDeciding.
  std::string reason = {};
  bool operator==(const LocationDecision&) const = default;
};

}  // namespace Wayfinding

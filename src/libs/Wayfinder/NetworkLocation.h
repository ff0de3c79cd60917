#pragma once

#include "libs/Wording/Message.h"

#include <cstdint>

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
  // Why it is this one, in a line: "LAN, 2 of 2 internal beacons answered". Empty for kDeciding.
  Wording::Message reason = {};
  bool operator==(const LocationDecision&) const = default;
};

}  // namespace Wayfinding

#pragma once

#include "libs/NetworkLocation/NetworkLocation.h"
#include "libs/Wording/Message.h"

namespace Wayfinding {

struct LocationDecision {
  NetworkLocation location = kDeciding;
  // Why it is this one, in a line: "LAN, 2 of 2 internal beacons answered". Empty for kDeciding.
  Wording::Message reason = {};
  bool operator==(const LocationDecision&) const = default;
};

}  // namespace Wayfinding

#pragma once

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

}  // namespace Wayfinding

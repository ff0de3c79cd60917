#pragma once

#include <cstdint>

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

}  // namespace Wayfinding

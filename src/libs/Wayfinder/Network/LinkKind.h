#pragma once

#include <string_view>

namespace Wayfinding {

enum class TunnelSense {
  No,
  Yes,
  AskNetworkManager,  // used by VPNs, and by DSL and mobile links too
};

// What the kernel's kind of a link ("wireguard", "tun"; empty for hardware) and its ARP type (ARPHRD_...)
// say.
[[nodiscard]] TunnelSense SenseOfLink(std::string_view kind, unsigned int arpType);

}  // namespace Wayfinding

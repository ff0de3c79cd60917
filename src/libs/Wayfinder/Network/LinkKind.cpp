#include "libs/Wayfinder/Network/LinkKind.h"

#include <net/if_arp.h>

#include <algorithm>
#include <array>

namespace Wayfinding {

TunnelSense SenseOfLink(std::string_view kind, unsigned int arpType) {
  constexpr std::array<std::string_view, 4> kTunnels = {"wireguard", "vti", "vti6", "xfrm"};
  constexpr std::array<std::string_view, 5> kDoubtful = {"ppp", "gre", "ipip", "sit", "tap"};
  const auto contains = [kind](const auto& kinds) {
    return std::find(kinds.begin(), kinds.end(), kind) != kinds.end();
  };
  if (contains(kTunnels) || kind.starts_with("ovpn")) return TunnelSense::Yes;
  // The kernel's kind of a tap is "tun" as well; it carries Ethernet.
  if (kind == "tun") return arpType == ARPHRD_NONE ? TunnelSense::Yes : TunnelSense::AskNetworkManager;
  return contains(kDoubtful) ? TunnelSense::AskNetworkManager : TunnelSense::No;
}

}  // namespace Wayfinding

#pragma once

#include <optional>
#include <string>

namespace Wayfinding {

struct NetworkLink {
  int index = 0;
  std::string name;          // "eth0"
  std::string kind;          // the kernel's, "wireguard"; empty for hardware
  unsigned int arpType = 0;  // ARPHRD_...
  bool isRunning = false;    // up, and connected to something
  bool isLoopback = false;
  bool operator==(const NetworkLink&) const = default;
};

// How packets to an address leave this machine.
struct Route {
  NetworkLink link;
  bool hasGateway = false;  // otherwise the destination is on the link itself
  bool isLocal = false;     // the destination is this machine
  bool operator==(const Route&) const = default;
};

// The kernel's own choice for a numeric address, policy rules included; nothing when there is no way or the
// kernel cannot be asked. Any thread; one netlink exchange, nothing is sent.
[[nodiscard]] std::optional<Route> RouteTo(const std::string& address);

// The way to the outside: that to an address which nobody has, IPv4 before IPv6, so that split default routes
// and routing rules count. Nothing without one over a running link. Any thread; as RouteTo.
[[nodiscard]] std::optional<Route> RouteToOutside();

}  // namespace Wayfinding

#pragma once

#include "libs/Wayfinder/Network/Routes.h"

#include <optional>
#include <string>
#include <vector>

namespace Wayfinding {

// What of this machine's network can change where it stands. Two equal states are the same network, as far as
// the kernel can tell.
struct NetworkState {
  std::vector<NetworkLink> links;      // running, not loopback, with an address that is valid beyond the link
  std::vector<std::string> addresses;  // theirs, as far as they can be used, each with its link, sorted
  std::vector<std::string> routes;     // over them, sorted
  std::optional<Route> outside;

  // A way to the outside, or a link to others without one.
  [[nodiscard]] bool IsUsable() const;
  // "eth0 192.0.2.2/24, outside through eth0", for the log.
  [[nodiscard]] std::string Description() const;
  bool operator==(const NetworkState&) const = default;
};

// Nothing when the kernel cannot be asked. Any thread; a few netlink exchanges, no waiting for the network.
[[nodiscard]] std::optional<NetworkState> ReadNetworkState();
// The same without `routes`, of which there may be very many.
[[nodiscard]] std::optional<NetworkState> ReadNetworkWithoutRoutes();

}  // namespace Wayfinding

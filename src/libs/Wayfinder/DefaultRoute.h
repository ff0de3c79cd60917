#pragma once

#include <optional>

// How packets to the outside leave this machine.
struct DefaultRoute {
  bool throughTunnel = false;
  bool direct = false;  // no gateway: the other end of the link is the destination's network
};

// The kernel's default route with the best metric, IPv4 before IPv6; nothing without one or when the kernel
// cannot be asked. Any thread; one netlink exchange, no waiting for the network.
[[nodiscard]] std::optional<DefaultRoute> CurrentDefaultRoute();

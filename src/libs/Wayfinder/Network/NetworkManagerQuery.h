#pragma once

#include <string>
#include <vector>

namespace Wayfinding {

// Whether NetworkManager, asked on the system bus, calls a connection a VPN that has one of these addresses
// (IPv4 or IPv6, numeric, without a prefix), those of a link. False where it does not run, or does not answer
// within half a second. Any thread.
[[nodiscard]] bool NetworkManagerCallsVPN(const std::vector<std::string>& linkAddresses);

}  // namespace Wayfinding

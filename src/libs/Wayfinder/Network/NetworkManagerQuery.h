#pragma once

#include <string>
#include <vector>

namespace Wayfinding {

// Whether NetworkManager, asked on the system bus, calls the connection that made this link a VPN: one whose
// device is the link, or whose addresses the link has (an IPv4 or IPv6 address each, numeric, without a
// prefix). False where it does not run, or does not answer within half a second. Any thread.
[[nodiscard]] bool NetworkManagerCallsVPN(const std::string& linkName,
                                          const std::vector<std::string>& linkAddresses);

}  // namespace Wayfinding

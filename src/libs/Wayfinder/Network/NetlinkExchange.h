#pragma once

#include "libs/Wayfinder/Network/NetlinkHandles.h"
#include "libs/Wayfinder/Network/Routes.h"

#include <optional>

namespace Wayfinding {

// A socket for one exchange with the kernel, which fails when no answer comes within a second; nothing when
// there is none to be had.
[[nodiscard]] NetlinkSocketPtr ConnectToKernel();

[[nodiscard]] NetworkLink DescribeLink(rtnl_link& link);
[[nodiscard]] std::optional<NetworkLink> FindLink(nl_sock& socket, int index);

}  // namespace Wayfinding

#include "libs/Wayfinder/Network/NetlinkExchange.h"

#include <net/if.h>
#include <sys/socket.h>
#include <sys/time.h>

namespace Wayfinding {

NetlinkSocketPtr ConnectToKernel() {
  NetlinkSocketPtr socket(nl_socket_alloc());
  if (socket == nullptr || nl_connect(socket.get(), NETLINK_ROUTE) != 0) return nullptr;
  // The kernel answers at once or, when a message was lost, not at all.
  constexpr timeval kTimeToAnswer{.tv_sec = 1, .tv_usec = 0};
  if (::setsockopt(nl_socket_get_fd(socket.get()), SOL_SOCKET, SO_RCVTIMEO, &kTimeToAnswer,
                   sizeof kTimeToAnswer) != 0)
    return nullptr;
  return socket;
}

NetworkLink DescribeLink(rtnl_link& link) {
  const auto text = [](const char* value) { return value == nullptr ? std::string() : std::string(value); };
  const unsigned int flags = rtnl_link_get_flags(&link);
  constexpr unsigned int kRunning = IFF_UP | IFF_RUNNING;
  return {.index = rtnl_link_get_ifindex(&link),
          .name = text(rtnl_link_get_name(&link)),
          .kind = text(rtnl_link_get_type(&link)),
          .arpType = rtnl_link_get_arptype(&link),
          .isRunning = (flags & kRunning) == kRunning,
          .isLoopback = (flags & IFF_LOOPBACK) != 0};
}

std::optional<NetworkLink> FindLink(nl_sock& socket, int index) {
  rtnl_link* found = nullptr;
  if (rtnl_link_get_kernel(&socket, index, nullptr, &found) != 0) return std::nullopt;
  const NetlinkLinkPtr link(found);
  return DescribeLink(*link);
}

}  // namespace Wayfinding

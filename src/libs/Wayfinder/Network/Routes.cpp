#include "libs/Wayfinder/Network/Routes.h"

#include "libs/Wayfinder/Network/NetlinkExchange.h"
#include "libs/Wayfinder/Network/NetlinkHandles.h"

#include <linux/rtnetlink.h>

namespace Wayfinding {
namespace {

NetlinkAddressPtr ParseAddress(const std::string& text) {
  nl_addr* address = nullptr;
  if (nl_addr_parse(text.c_str(), AF_UNSPEC, &address) != 0) return nullptr;
  return NetlinkAddressPtr(address);
}

NetlinkMessagePtr Question(nl_addr& destination) {
  NetlinkMessagePtr message(nlmsg_alloc_simple(RTM_GETROUTE, NLM_F_REQUEST));
  if (message == nullptr) return nullptr;
  rtmsg head{};
  head.rtm_family = static_cast<unsigned char>(nl_addr_get_family(&destination));
  head.rtm_dst_len = static_cast<unsigned char>(nl_addr_get_prefixlen(&destination));
  const bool complete = nlmsg_append(message.get(), &head, sizeof head, NLMSG_ALIGNTO) == 0 &&
                        nla_put_addr(message.get(), RTA_DST, &destination) == 0;
  return complete ? std::move(message) : nullptr;
}

int TakeRoute(nl_msg* message, void* result) {
  rtnl_route* route = nullptr;
  if (rtnl_route_parse(nlmsg_hdr(message), &route) == 0) static_cast<NetlinkRoutePtr*>(result)->reset(route);
  return NL_OK;
}

NetlinkRoutePtr Ask(nl_sock& socket, nl_addr& destination) {
  const NetlinkMessagePtr question = Question(destination);
  NetlinkRoutePtr answer;
  if (question == nullptr) return nullptr;
  nl_socket_modify_cb(&socket, NL_CB_VALID, NL_CB_CUSTOM, TakeRoute, &answer);
  if (nl_send_auto(&socket, question.get()) < 0 || nl_recvmsgs_default(&socket) < 0) return nullptr;
  return answer;
}

}  // namespace

std::optional<Route> RouteTo(const std::string& address) {
  const NetlinkAddressPtr destination = ParseAddress(address);
  if (destination == nullptr) return std::nullopt;
  const NetlinkSocketPtr question = ConnectToKernel();
  const NetlinkSocketPtr links = ConnectToKernel();
  if (question == nullptr || links == nullptr) return std::nullopt;
  const NetlinkRoutePtr route = Ask(*question, *destination);
  rtnl_nexthop* const hop = route == nullptr ? nullptr : rtnl_route_nexthop_n(route.get(), 0);
  if (hop == nullptr) return std::nullopt;
  const std::optional<NetworkLink> link = FindLink(*links, rtnl_route_nh_get_ifindex(hop));
  if (!link) return std::nullopt;
  return Route{
      .link = *link,
      .hasGateway = rtnl_route_nh_get_gateway(hop) != nullptr || rtnl_route_nh_get_via(hop) != nullptr,
      .isLocal = rtnl_route_get_type(route.get()) == RTN_LOCAL};
}

std::optional<Route> RouteToOutside() {
  // Addresses kept for documentation, so that no network has a route of its own for them.
  for (const char* address : {"203.0.113.1", "2001:db8::1"}) {
    std::optional<Route> route = RouteTo(address);
    if (route && route->link.isRunning) return route;
  }
  return std::nullopt;
}

}  // namespace Wayfinding

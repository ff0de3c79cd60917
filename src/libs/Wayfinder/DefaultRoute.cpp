#include "libs/Wayfinder/DefaultRoute.h"

#include <linux/if_arp.h>
#include <linux/rtnetlink.h>
#include <netlink/cache.h>
#include <netlink/netlink.h>
#include <netlink/route/link.h>
#include <netlink/route/nexthop.h>
#include <netlink/route/route.h>

#include <algorithm>
#include <array>
#include <memory>
#include <string_view>

namespace {

struct SocketDeleter {
  void operator()(nl_sock* socket) const { nl_socket_free(socket); }
};
struct CacheDeleter {
  void operator()(nl_cache* cache) const { nl_cache_free(cache); }
};
struct LinkDeleter {
  void operator()(rtnl_link* link) const { rtnl_link_put(link); }
};
using SocketPtr = std::unique_ptr<nl_sock, SocketDeleter>;
using CachePtr = std::unique_ptr<nl_cache, CacheDeleter>;
using LinkPtr = std::unique_ptr<rtnl_link, LinkDeleter>;

CachePtr DumpRoutes(nl_sock& socket) {
  nl_cache* routes = nullptr;
  return rtnl_route_alloc_cache(&socket, AF_UNSPEC, 0, &routes) == 0 ? CachePtr(routes) : nullptr;
}

LinkPtr FindLink(nl_sock& socket, int index) {
  rtnl_link* link = nullptr;
  return rtnl_link_get_kernel(&socket, index, nullptr, &link) == 0 ? LinkPtr(link) : nullptr;
}

bool IsDefault(rtnl_route& route) {
  return nl_addr_get_prefixlen(rtnl_route_get_dst(&route)) == 0 &&
         rtnl_route_get_table(&route) == RT_TABLE_MAIN && rtnl_route_get_type(&route) == RTN_UNICAST &&
         rtnl_route_get_nnexthops(&route) > 0;
}

bool IsBetter(rtnl_route& route, rtnl_route& than) {
  const auto rank = [](rtnl_route& of) {
    return std::pair(rtnl_route_get_family(&of) != AF_INET, rtnl_route_get_priority(&of));
  };
  return rank(route) < rank(than);
}

rtnl_route* BestDefault(nl_cache& routes) {
  rtnl_route* best = nullptr;
  for (nl_object* object = nl_cache_get_first(&routes); object != nullptr;
       object = nl_cache_get_next(object)) {
    auto& route = *reinterpret_cast<rtnl_route*>(object);
    if (IsDefault(route) && (best == nullptr || IsBetter(route, *best))) best = &route;
  }
  return best;
}

bool IsTunnel(rtnl_link& link) {
  constexpr std::array<std::string_view, 4> kKinds = {"wireguard", "vti", "vti6", "xfrm"};
  const char* type = rtnl_link_get_type(&link);
  const std::string_view kind = type == nullptr ? "" : type;
  return std::find(kKinds.begin(), kKinds.end(), kind) != kKinds.end() || kind.starts_with("ovpn") ||
         (kind == "tun" && rtnl_link_get_arptype(&link) == ARPHRD_NONE);
}

}  // namespace

std::optional<DefaultRoute> CurrentDefaultRoute() {
  const SocketPtr socket(nl_socket_alloc());
  if (socket == nullptr || nl_connect(socket.get(), NETLINK_ROUTE) != 0) return std::nullopt;
  const CachePtr routes = DumpRoutes(*socket);
  rtnl_route* best = routes == nullptr ? nullptr : BestDefault(*routes);
  if (best == nullptr) return std::nullopt;
  rtnl_nexthop* hop = rtnl_route_nexthop_n(best, 0);
  const LinkPtr link = FindLink(*socket, rtnl_route_nh_get_ifindex(hop));
  return DefaultRoute{
      .throughTunnel = link != nullptr && IsTunnel(*link),
      .direct = rtnl_route_nh_get_gateway(hop) == nullptr && rtnl_route_nh_get_via(hop) == nullptr};
}

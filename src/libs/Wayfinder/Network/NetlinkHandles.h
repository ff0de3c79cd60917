#pragma once

#include <netlink/cache.h>
#include <netlink/msg.h>
#include <netlink/netlink.h>
#include <netlink/route/addr.h>
#include <netlink/route/link.h>
#include <netlink/route/nexthop.h>
#include <netlink/route/route.h>

#include <memory>

// The one place that includes libnl: its objects as owning pointers.
struct NetlinkDeleter {
  void operator()(nl_sock* socket) const noexcept { nl_socket_free(socket); }
  void operator()(nl_cache* cache) const noexcept { nl_cache_free(cache); }
  void operator()(nl_msg* message) const noexcept { nlmsg_free(message); }
  void operator()(nl_addr* address) const noexcept { nl_addr_put(address); }
  void operator()(rtnl_link* link) const noexcept { rtnl_link_put(link); }
  void operator()(rtnl_route* route) const noexcept { rtnl_route_put(route); }
};

using NetlinkSocketPtr = std::unique_ptr<nl_sock, NetlinkDeleter>;
using NetlinkCachePtr = std::unique_ptr<nl_cache, NetlinkDeleter>;
using NetlinkMessagePtr = std::unique_ptr<nl_msg, NetlinkDeleter>;
using NetlinkAddressPtr = std::unique_ptr<nl_addr, NetlinkDeleter>;
using NetlinkLinkPtr = std::unique_ptr<rtnl_link, NetlinkDeleter>;
using NetlinkRoutePtr = std::unique_ptr<rtnl_route, NetlinkDeleter>;

#pragma once

#include "libs/Lifetime/UniqueHandle.h"

#include <netlink/cache.h>
#include <netlink/msg.h>
#include <netlink/netlink.h>
#include <netlink/route/addr.h>
#include <netlink/route/link.h>
#include <netlink/route/nexthop.h>
#include <netlink/route/route.h>

namespace Wayfinding {

// The one place that includes libnl: its objects as owning pointers.
using NetlinkSocketPtr = Lifetime::UniqueHandle<nl_sock, nl_socket_free>;
using NetlinkCachePtr = Lifetime::UniqueHandle<nl_cache, nl_cache_free>;
using NetlinkMessagePtr = Lifetime::UniqueHandle<nl_msg, nlmsg_free>;
using NetlinkAddressPtr = Lifetime::UniqueHandle<nl_addr, nl_addr_put>;
using NetlinkLinkPtr = Lifetime::UniqueHandle<rtnl_link, rtnl_link_put>;
using NetlinkRoutePtr = Lifetime::UniqueHandle<rtnl_route, rtnl_route_put>;

}  // namespace Wayfinding

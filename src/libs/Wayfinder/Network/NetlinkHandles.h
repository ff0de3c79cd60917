#pragma once

#include "libs/Lifetime/UniqueHandle.h"

#include <netlink/cache.h>
#include <netlink/msg.h>
#include <netlink/netlink.h>
#include <netlink/route/addr.h>
#include <netlink/route/link.h>
#include <netlink/route/nexthop.h>
#include <netlink/route/route.h>

// The one place that includes libnl: its objects as owning pointers.
using NetlinkSocketPtr = UniqueHandle<nl_sock, nl_socket_free>;
using NetlinkCachePtr = UniqueHandle<nl_cache, nl_cache_free>;
using NetlinkMessagePtr = UniqueHandle<nl_msg, nlmsg_free>;
using NetlinkAddressPtr = UniqueHandle<nl_addr, nl_addr_put>;
using NetlinkLinkPtr = UniqueHandle<rtnl_link, rtnl_link_put>;
using NetlinkRoutePtr = UniqueHandle<rtnl_route, rtnl_route_put>;

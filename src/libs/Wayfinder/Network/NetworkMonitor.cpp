#include "libs/Wayfinder/Network/NetworkMonitor.h"

#include "libs/Wayfinder/Network/NetlinkHandles.h"

#include <linux/if_addr.h>
#include <linux/rtnetlink.h>
#include <net/if.h>

#include <utility>

namespace Wayfinding {
namespace {

template <class Head>
const Head& HeadOf(const nlmsghdr* message) {
  return *static_cast<const Head*>(nlmsg_data(message));
}

void TakeLink(nlmsghdr* message, NetworkEvents& events) {
  // A wireless scan, of which there are many.
  if (nlmsg_find_attr(message, sizeof(ifinfomsg), IFLA_WIRELESS) != nullptr) return;
  const auto& link = HeadOf<ifinfomsg>(message);
  events.any = true;
  if (message->nlmsg_type == RTM_DELLINK || (link.ifi_flags & IFF_RUNNING) == 0)
    events.linksThatLost.push_back(link.ifi_index);
}

void TakeAddress(const nlmsghdr* message, NetworkEvents& events) {
  const auto& address = HeadOf<ifaddrmsg>(message);
  if (address.ifa_scope >= RT_SCOPE_LINK) return;
  events.any = true;
  if (message->nlmsg_type == RTM_DELADDR) events.linksThatLost.push_back(static_cast<int>(address.ifa_index));
}

void TakeRoute(nlmsghdr* message, NetworkEvents& events) {
  const auto& route = HeadOf<rtmsg>(message);
  if (route.rtm_type != RTN_UNICAST || (route.rtm_flags & RTM_F_CLONED) != 0) return;
  events.any = true;
  const bool isDefault = route.rtm_dst_len == 0;
  if (message->nlmsg_type != RTM_DELROUTE || !isDefault) return;
  const nlattr* const link = nlmsg_find_attr(message, sizeof(rtmsg), RTA_OIF);
  if (link != nullptr) {
    events.linksThatLost.push_back(static_cast<int>(nla_get_u32(link)));
  } else {
    events.mayHaveLostAny = true;  // a route over several links
  }
}

void TakeAny(nlmsghdr* message, NetworkEvents& events) {
  switch (message->nlmsg_type) {
    case RTM_NEWLINK:
    case RTM_DELLINK:
      return TakeLink(message, events);
    case RTM_NEWADDR:
    case RTM_DELADDR:
      return TakeAddress(message, events);
    case RTM_NEWROUTE:
    case RTM_DELROUTE:
      return TakeRoute(message, events);
    default:
      events.any = true;
  }
}

}  // namespace

void NetworkMonitor::Free(nl_sock* socket) {
  nl_socket_free(socket);
}

std::unique_ptr<NetworkMonitor> NetworkMonitor::Open() {
  std::unique_ptr<NetworkMonitor> monitor(new NetworkMonitor);
  monitor->socket_.reset(nl_socket_alloc());
  nl_sock* const socket = monitor->socket_.get();
  if (socket == nullptr) return nullptr;
  constexpr int kReceiveBuffer = 1 << 20;  // a burst of events while beacons are asked
  nl_socket_disable_seq_check(socket);
  nl_socket_modify_cb(socket, NL_CB_VALID, NL_CB_CUSTOM, TakeMessage, &monitor->events_);
  if (nl_connect(socket, NETLINK_ROUTE) != 0 || nl_socket_set_nonblocking(socket) != 0) return nullptr;
  nl_socket_set_buffer_size(socket, kReceiveBuffer, 0);
  for (const int group : {RTNLGRP_LINK, RTNLGRP_IPV4_IFADDR, RTNLGRP_IPV6_IFADDR, RTNLGRP_IPV4_ROUTE,
                          RTNLGRP_IPV6_ROUTE, RTNLGRP_IPV4_RULE, RTNLGRP_IPV6_RULE}) {
    if (nl_socket_add_membership(socket, group) != 0) return nullptr;
  }
  return monitor;
}

int NetworkMonitor::Descriptor() const {
  return nl_socket_get_fd(socket_.get());
}

int NetworkMonitor::TakeMessage(nl_msg* message, void* events) {
  TakeAny(nlmsg_hdr(message), *static_cast<NetworkEvents*>(events));
  return NL_OK;
}

NetworkEvents NetworkMonitor::Take() {
  // More than this at once waits for its turn: the caller has other things to do.
  constexpr int kMostReads = 64;
  int result = 0;
  for (int reads = 0; result >= 0 && reads < kMostReads; ++reads) result = nl_recvmsgs_default(socket_.get());
  if (result < 0 && result != -NLE_AGAIN) events_.any = events_.mayHaveLostAny = true;
  return std::exchange(events_, {});
}

}  // namespace Wayfinding

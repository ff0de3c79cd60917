#include "libs/Wayfinder/Network/NetworkState.h"

#include "libs/Wayfinder/Network/NetlinkExchange.h"
#include "libs/Wayfinder/Network/NetlinkHandles.h"

#include <linux/if_addr.h>
#include <linux/rtnetlink.h>

#include <algorithm>
#include <array>
#include <functional>
#include <map>

namespace Wayfinding {
namespace {

using LinksByIndex = std::map<int, NetworkLink>;

template <class Kind>
void ForEach(nl_cache* cache, const std::function<void(Kind&)>& visit) {
  const NetlinkCachePtr owned(cache);
  for (nl_object* object = nl_cache_get_first(cache); object != nullptr; object = nl_cache_get_next(object)) {
    visit(*reinterpret_cast<Kind*>(object));
  }
}

std::string Text(nl_addr* address) {
  std::array<char, 128> text{};
  return address == nullptr ? std::string() : std::string(nl_addr2str(address, text.data(), text.size()));
}

// Not before duplicate-address detection has come to its end, and only a good one, can the address be used.
bool CanBeUsed(rtnl_addr& address) {
  const unsigned int flags = rtnl_addr_get_flags(&address);
  if ((flags & IFA_F_DADFAILED) != 0) return false;
  return (flags & IFA_F_TENTATIVE) == 0 || (flags & IFA_F_OPTIMISTIC) != 0;
}

bool ReadLinks(nl_sock& socket, LinksByIndex& links) {
  nl_cache* cache = nullptr;
  if (rtnl_link_alloc_cache(&socket, AF_UNSPEC, &cache) != 0) return false;
  ForEach<rtnl_link>(cache, [&links](rtnl_link& entry) {
    NetworkLink link = DescribeLink(entry);
    if (link.isRunning && !link.isLoopback) links[link.index] = std::move(link);
  });
  return true;
}

// Leaves in `links` those that have an address, so that a container's end of a bridge does not count.
bool ReadAddresses(nl_sock& socket, LinksByIndex& links, NetworkState& state) {
  nl_cache* cache = nullptr;
  if (rtnl_addr_alloc_cache(&socket, &cache) != 0) return false;
  LinksByIndex addressed;
  ForEach<rtnl_addr>(cache, [&](rtnl_addr& entry) {
    const auto link = links.find(rtnl_addr_get_ifindex(&entry));
    if (link == links.end() || rtnl_addr_get_scope(&entry) >= RT_SCOPE_LINK || !CanBeUsed(entry)) return;
    addressed.insert(*link);
    state.addresses.push_back(link->second.name + " " + Text(rtnl_addr_get_local(&entry)));
  });
  links = std::move(addressed);
  return true;
}

std::string Text(rtnl_route& route, rtnl_nexthop& hop, const NetworkLink& link) {
  return Text(rtnl_route_get_dst(&route)) + " " + link.name + " " + Text(rtnl_route_nh_get_gateway(&hop)) +
         " " + std::to_string(rtnl_route_get_table(&route)) + " " +
         std::to_string(rtnl_route_get_priority(&route));
}

bool IsWithinLink(rtnl_route& route) {
  return Text(rtnl_route_get_dst(&route)).starts_with("fe80:");
}

bool ReadRoutes(nl_sock& socket, const LinksByIndex& links, NetworkState& state) {
  nl_cache* cache = nullptr;
  if (rtnl_route_alloc_cache(&socket, AF_UNSPEC, 0, &cache) != 0) return false;
  ForEach<rtnl_route>(cache, [&](rtnl_route& route) {
    if (rtnl_route_get_type(&route) != RTN_UNICAST || IsWithinLink(route)) return;
    for (int i = 0; i < rtnl_route_get_nnexthops(&route); ++i) {
      rtnl_nexthop& hop = *rtnl_route_nexthop_n(&route, i);
      const auto link = links.find(rtnl_route_nh_get_ifindex(&hop));
      if (link != links.end()) state.routes.push_back(Text(route, hop, link->second));
    }
  });
  return true;
}

std::optional<NetworkState> Read(bool withRoutes) {
  const NetlinkSocketPtr socket = ConnectToKernel();
  if (socket == nullptr) return std::nullopt;
  LinksByIndex links;
  NetworkState state;
  if (!ReadLinks(*socket, links) || !ReadAddresses(*socket, links, state) ||
      (withRoutes && !ReadRoutes(*socket, links, state)))
    return std::nullopt;
  for (auto& [index, link] : links) state.links.push_back(std::move(link));
  std::sort(state.addresses.begin(), state.addresses.end());
  std::sort(state.routes.begin(), state.routes.end());
  state.outside = RouteToOutside();
  return state;
}

}  // namespace

bool NetworkState::IsUsable() const {
  return !links.empty() || (outside && !outside->link.isLoopback);
}

std::string NetworkState::Description() const {
  std::string text;
  for (const std::string& address : addresses) text += (text.empty() ? "" : ", ") + address;
  if (outside) {
    text += (text.empty() ? "outside through " : ", outside through ") + outside->link.name;
  } else {
    text += text.empty() ? "nothing but this machine" : ", no way to the outside";
  }
  return text;
}

std::optional<NetworkState> ReadNetworkState() {
  return Read(true);
}

std::optional<NetworkState> ReadNetworkWithoutRoutes() {
  return Read(false);
}

}  // namespace Wayfinding

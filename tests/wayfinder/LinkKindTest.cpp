#include "libs/Wayfinder/Network/LinkKind.h"

#include <gtest/gtest.h>
#include <linux/if_arp.h>

using Wayfinding::SenseOfLink;
using Wayfinding::TunnelSense;

namespace {

TEST(LinkKind, VPNKindsAreTunnels) {
  for (const char* kind : {"wireguard", "vti", "vti6", "xfrm", "ovpn", "ovpn-dco"}) {
    EXPECT_EQ(SenseOfLink(kind, ARPHRD_NONE), TunnelSense::Yes) << kind;
  }
}

TEST(LinkKind, ATunIsATunnelAndATapIsNotOneByItself) {
  EXPECT_EQ(SenseOfLink("tun", ARPHRD_NONE), TunnelSense::Yes);
  EXPECT_EQ(SenseOfLink("tun", ARPHRD_ETHER), TunnelSense::AskNetworkManager);
}

TEST(LinkKind, KindsThatOthersUseTooNeedAnotherWord) {
  for (const char* kind : {"ppp", "gre", "ipip", "sit", "tap"}) {
    EXPECT_EQ(SenseOfLink(kind, ARPHRD_NONE), TunnelSense::AskNetworkManager) << kind;
  }
}

TEST(LinkKind, HardwareBridgesAndContainersAreNoTunnels) {
  for (const char* kind : {"", "veth", "bridge", "dummy", "vlan", "bond"}) {
    EXPECT_EQ(SenseOfLink(kind, ARPHRD_ETHER), TunnelSense::No) << kind;
  }
}

}  // namespace

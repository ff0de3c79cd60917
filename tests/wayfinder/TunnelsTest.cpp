#include "libs/Wayfinder/Network/LinkKind.h"
#include "libs/Wayfinder/Network/Routes.h"
#include "libs/Wayfinder/Wayfinder.h"
#include "wayfinder/AddressServer.h"
#include "wayfinder/FakeNetworkManager.h"
#include "wayfinder/NetworkNamespaces.h"
#include "wayfinder/ProcessCounts.h"
#include "wayfinder/RecordedService.h"
#include "wayfinder/Responses.h"
#include "wayfinder/TunnelPair.h"

#include <gmock/gmock.h>

#include <list>
#include <optional>

using TestSupport::AddressServer;
using TestSupport::FakeNetworkManager;
using TestSupport::kGood;
using TestSupport::kStore;
using TestSupport::RecordedService;
using TestSupport::TunnelEnd;
using TestSupport::TunnelPair;

namespace {

constexpr char kBehindTunnel[] = "http://10.8.0.2/";

class Tunnels : public TestSupport::NetworkNamespaces {
 protected:
  void SetUp() override {
    NetworkNamespaces::SetUp();
    ::setenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent/bus", 1);
  }
  void TearDown() override {
    pair_.reset();
    ::unsetenv("DBUS_SYSTEM_BUS_ADDRESS");
    NetworkNamespaces::TearDown();
  }

  // False where the machine has no tunnels to give.
  [[nodiscard]] bool Connect(bool isTap) {
    near_.emplace("vpn0", isTap);
    InFar([&] { far_.emplace("vpn1", isTap); });
    if (near_->device.Get() < 0 || far_->device.Get() < 0) return false;
    FarIP({"address", "add", "10.8.0.2/24", "dev", "vpn1"});
    FarIP({"link", "set", "vpn1", "up"});
    IP({"address", "add", "10.8.0.1/24", "dev", "vpn0"});
    IP({"link", "set", "vpn0", "up"});
    pair_.emplace(*near_, *far_);
    InFar([this] { server_.emplace("10.8.0.2", 80, kGood); });
    return true;
  }
  void ExpectLocation(std::uint32_t location) {
    service_.SetStores({{kStore, {kBehindTunnel}, {}}});
    EXPECT_TRUE(service_.WaitForLocation(kStore, location)) << testing::PrintToString(service_.Messages());
  }

  std::optional<TunnelEnd> near_;
  std::optional<TunnelEnd> far_;
  std::optional<TunnelPair> pair_;
  std::optional<AddressServer> server_;
  RecordedService service_;
};

TEST_F(Tunnels, AnInternalBeaconBehindATunIsReachedByVPN) {
  if (!Connect(false)) GTEST_SKIP() << "the machine makes no tun links";
  ExpectLocation(Wayfinder::kVPN);
  EXPECT_TRUE(service_.WaitForMessage("the route to 10.8.0.2 leaves through vpn0 (tun)"));
}

TEST_F(Tunnels, SomeInternalBeaconsBehindATunAreReachedByVPNToo) {
  if (!Connect(false)) GTEST_SKIP() << "the machine makes no tun links";
  service_.SetStores({{kStore, {kBehindTunnel, "http://10.8.0.2:81/"}, {}}});
  EXPECT_TRUE(service_.WaitForLocation(kStore, Wayfinder::kVPN));
}

TEST_F(Tunnels, ATunBesideTheWayToTheBeaconDoesNotCount) {
  if (!Connect(false)) GTEST_SKIP() << "the machine makes no tun links";
  ConnectByWire();
  std::optional<AddressServer> inside;
  InFar([&inside] { inside.emplace("10.1.0.2", 80, kGood); });
  service_.SetStores({{kStore, {"http://10.1.0.2/"}, {kBehindTunnel}}});
  EXPECT_TRUE(service_.WaitForLocation(kStore, Wayfinder::kLAN));
}

TEST_F(Tunnels, ATapIsAVPNOnlyInNetworkManagersWord) {
  if (!Connect(true)) GTEST_SKIP() << "the machine makes no tap links";
  ExpectLocation(Wayfinder::kLAN);
}

TEST_F(Tunnels, ATapThatNetworkManagerCallsAVPNIsOne) {
  if (!Connect(true)) GTEST_SKIP() << "the machine makes no tap links";
  const FakeNetworkManager manager({.link = "eth0", .address = "10.8.0.1"});
  ExpectLocation(Wayfinder::kVPN);
}

TEST_F(Tunnels, ALinkThatAVPNRunsOverIsNone) {
  if (!Connect(true)) GTEST_SKIP() << "the machine makes no tap links";
  const FakeNetworkManager manager({.link = "vpn0", .address = "10.9.0.1"});
  ExpectLocation(Wayfinder::kLAN);
}

TEST_F(Tunnels, NetworkManagerIsAskedOnceForALink) {
  if (!Connect(true)) GTEST_SKIP() << "the machine makes no tap links";
  const FakeNetworkManager silent({.link = "vpn0", .address = "10.8.0.1"}, true);
  std::vector<std::string> beacons;
  std::list<AddressServer> servers;
  for (const char* address : {"10.8.0.3", "10.8.0.4", "10.8.0.5", "10.8.0.6", "10.8.0.7", "10.8.0.8"}) {
    FarIP({"address", "add", std::string(address) + "/24", "dev", "vpn1"});
    InFar([&] { servers.emplace_back(address, 80, kGood); });
    beacons.push_back(std::string("http://") + address + "/");
  }
  service_.SetStores({{kStore, beacons, {}}});
  EXPECT_TRUE(service_.WaitForLocation(kStore, Wayfinder::kLAN));
  EXPECT_TRUE(TestSupport::ComesTrue([&silent] { return silent.Questions() > 0; }));
  EXPECT_EQ(silent.Questions(), 1);
}

TEST_F(Tunnels, ADefaultRouteThroughALinkThatNetworkManagerCallsAVPNIsTransient) {
  if (!Connect(true)) GTEST_SKIP() << "the machine makes no tap links";
  IP({"route", "add", "default", "dev", "vpn0"});
  EXPECT_EQ(service_.Flags() & Wayfinder::kTransientConnection, 0U) << "nobody says so";
  const FakeNetworkManager manager({.link = "vpn0", .address = "10.8.0.1"});
  ExpectLocation(Wayfinder::kVPN);
  EXPECT_NE(service_.Flags() & Wayfinder::kTransientConnection, 0U);
  service_.SetStores({});
  EXPECT_TRUE(TestSupport::ComesTrue([this] {
    return (service_.Flags() & Wayfinder::kTransientConnection) == 0;
  })) << "nobody watches the network any more";
}

TEST_F(Tunnels, ADefaultRouteThroughATunnelIsTransient) {
  if (!Connect(false)) GTEST_SKIP() << "the machine makes no tun links";
  IP({"route", "add", "default", "dev", "vpn0"});
  EXPECT_EQ(service_.Flags(), Wayfinder::kTransientConnection | Wayfinder::kReachable | Wayfinder::kIsDirect);
}

TEST_F(Tunnels, SplitDefaultRoutesThroughATunnelAreSeen) {
  if (!Connect(false)) GTEST_SKIP() << "the machine makes no tun links";
  ConnectByWire();
  IP({"route", "add", "default", "via", "10.1.0.254"});
  IP({"route", "add", "0.0.0.0/1", "dev", "vpn0"});
  IP({"route", "add", "128.0.0.0/1", "dev", "vpn0"});
  EXPECT_NE(service_.Flags() & Wayfinder::kTransientConnection, 0U);
}

TEST_F(Tunnels, AWireGuardLinkIsATunnel) {
  if (!HasKind("wireguard")) GTEST_SKIP() << "the kernel makes no wireguard links";
  IP({"link", "add", "wg0", "type", "wireguard"});
  IP({"address", "add", "10.8.0.1/24", "dev", "wg0"});
  IP({"link", "set", "wg0", "up"});
  const auto route = Wayfinding::RouteTo("10.8.0.2");
  ASSERT_TRUE(route);
  EXPECT_EQ(Wayfinding::SenseOfLink(route->link.kind, route->link.arpType), Wayfinding::TunnelSense::Yes);
}

}  // namespace

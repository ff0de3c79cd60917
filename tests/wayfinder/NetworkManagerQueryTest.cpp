#include "libs/Wayfinder/NetworkManagerQuery.h"
#include "wayfinder/FakeNetworkManager.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>

using testsupport::FakeNetworkManager;
using Wayfinding::NetworkManagerCallsVPN;

namespace {

TEST(NetworkManagerQuery, TheDeviceOfAVPNIsOne) {
  const FakeNetworkManager manager({.link = "ppp0", .address = "10.9.0.1"});
  EXPECT_TRUE(NetworkManagerCallsVPN("ppp0", {}));
  EXPECT_FALSE(NetworkManagerCallsVPN("ppp1", {"10.9.0.2"}));
}

TEST(NetworkManagerQuery, ALinkWithAVPNsAddressIsOne) {
  const FakeNetworkManager manager({.link = "eth0", .address = "10.9.0.1"});
  EXPECT_TRUE(NetworkManagerCallsVPN("ppp0", {"fd00::1", "10.9.0.1"}));
}

TEST(NetworkManagerQuery, AnotherConnectionIsNone) {
  const FakeNetworkManager manager({.link = "ppp0", .address = "10.9.0.1", .isVPN = false});
  EXPECT_FALSE(NetworkManagerCallsVPN("ppp0", {"10.9.0.1"}));
}

TEST(NetworkManagerQuery, WhereNobodyAnswersThereIsNone) {
  ::setenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent/bus", 1);
  EXPECT_FALSE(NetworkManagerCallsVPN("ppp0", {}));
  ::unsetenv("DBUS_SYSTEM_BUS_ADDRESS");
}

TEST(NetworkManagerQuery, AManagerThatHangsIsNotWaitedForLong) {
  const FakeNetworkManager manager({.link = "ppp0", .address = "10.9.0.1"}, true);
  const auto start = std::chrono::steady_clock::now();
  EXPECT_FALSE(NetworkManagerCallsVPN("ppp0", {}));
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2));
}

}  // namespace

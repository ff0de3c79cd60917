#include "libs/Files/FileDescriptor.h"
#include "libs/Wayfinder/Network/NetworkManagerQuery.h"
#include "support/TemporaryFolder.h"
#include "wayfinder/FakeNetworkManager.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <cstdlib>

using TestSupport::FakeNetworkManager;
using Wayfinding::NetworkManagerCallsVPN;

namespace {

Files::FileDescriptor ListenInSilence(const std::string& path) {
  Files::FileDescriptor listener(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  sockaddr_un place{};
  place.sun_family = AF_UNIX;
  path.copy(place.sun_path, sizeof place.sun_path - 1);
  EXPECT_EQ(::bind(listener.Get(), reinterpret_cast<sockaddr*>(&place), sizeof place), 0);
  EXPECT_EQ(::listen(listener.Get(), SOMAXCONN), 0);
  return listener;
}

TEST(NetworkManagerQuery, ALinkWithAVPNsAddressIsOne) {
  const FakeNetworkManager manager({.link = "eth0", .address = "10.9.0.1"});
  EXPECT_TRUE(NetworkManagerCallsVPN({"fd00::1", "10.9.0.1"}));
  EXPECT_FALSE(NetworkManagerCallsVPN({"fd00::1", "10.9.0.2"}));
}

TEST(NetworkManagerQuery, AnotherConnectionIsNone) {
  const FakeNetworkManager manager({.link = "ppp0", .address = "10.9.0.1", .isVPN = false});
  EXPECT_FALSE(NetworkManagerCallsVPN({"10.9.0.1"}));
}

TEST(NetworkManagerQuery, WhereNobodyAnswersThereIsNone) {
  ::setenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent/bus", 1);
  EXPECT_FALSE(NetworkManagerCallsVPN({"10.9.0.1"}));
  ::unsetenv("DBUS_SYSTEM_BUS_ADDRESS");
}

TEST(NetworkManagerQuery, AManagerThatHangsIsNotWaitedForLong) {
  const FakeNetworkManager manager({.link = "ppp0", .address = "10.9.0.1"}, true);
  ::setenv("SYSTEMD_BUS_TIMEOUT", "1h", 1);
  EXPECT_FALSE(NetworkManagerCallsVPN({"10.9.0.1"}));
  ::unsetenv("SYSTEMD_BUS_TIMEOUT");
}

TEST(NetworkManagerQuery, ABusThatHangsIsNotWaitedForLong) {
  const TestSupport::TemporaryFolder folder;
  const Files::FileDescriptor bus = ListenInSilence(folder.Path() / "bus");
  ::setenv("DBUS_SYSTEM_BUS_ADDRESS", ("unix:path=" + (folder.Path() / "bus").string()).c_str(), 1);
  EXPECT_FALSE(NetworkManagerCallsVPN({"10.9.0.1"}));
  ::unsetenv("DBUS_SYSTEM_BUS_ADDRESS");
}

}  // namespace

#include "libs/Wayfinder/LocationLoop.h"
#include "libs/Wayfinder/Network/NetworkMonitor.h"
#include "libs/Wayfinder/Wayfinder.h"
#include "support/TemporaryFolder.h"
#include "wayfinder/AddressServer.h"
#include "wayfinder/HangingResolver.h"
#include "wayfinder/NetworkNamespaces.h"
#include "wayfinder/ProcessCounts.h"
#include "wayfinder/RecordedService.h"
#include "wayfinder/Responses.h"

#include <gmock/gmock.h>

#include <atomic>
#include <fstream>
#include <optional>

using testing::Pair;
using TestSupport::AddressServer;
using TestSupport::kGood;
using TestSupport::kStore;
using TestSupport::RecordedService;

namespace {

// A store on whose network the machine is.
class NetworkChanges : public TestSupport::NetworkNamespaces {
 protected:
  void SetUp() override {
    NetworkNamespaces::SetUp();
    if (IsSkipped()) return;
    ConnectByWire();
    InFar([this] { server_.emplace("10.1.0.2", 80, kGood); });
    service_.SetStores({{kStore, {"http://10.1.0.2/"}, {}}});
    ASSERT_TRUE(service_.WaitForLocation(kStore, Wayfinder::kLAN));
  }

  std::optional<AddressServer> server_;
  RecordedService service_;
};

TEST_F(NetworkChanges, ALinkThatGoesDownIsSeenAndItsReturnToo) {
  IP({"link", "set", "near0", "down"});
  EXPECT_TRUE(service_.WaitForLocation(kStore, Wayfinder::kNone));
  IP({"link", "set", "near0", "up"});
  EXPECT_TRUE(service_.WaitForLocation(kStore, Wayfinder::kLAN));
  EXPECT_THAT(service_.Changes().front(), Pair(kStore, Wayfinder::kLAN));
  EXPECT_TRUE(service_.WaitForMessage("network changed: nothing but this machine"));
  EXPECT_TRUE(service_.WaitForMessage("network changed: near0 10.1.0.1/24, no way to the outside"));
}

TEST_F(NetworkChanges, ANewNetworkIsUndecidedUntilItsFirstAnswer) {
  FarIP({"address", "delete", "10.1.0.2/24", "dev", "far0"});
  IP({"address", "add", "10.1.0.9/24", "dev", "near0"});
  ASSERT_TRUE(service_.WaitForLocation(kStore, Wayfinder::kDeciding));
  EXPECT_EQ(service_.LocationOf(kStore), Wayfinder::kDeciding);
  ASSERT_TRUE(service_.WaitForLocation(kStore, Wayfinder::kNone));
}

TEST_F(NetworkChanges, ABurstOfChangesMakesOneRound) {
  for (const char* address : {"10.2.0.1/24", "10.3.0.1/24", "10.4.0.1/24", "10.5.0.1/24"})
    IP({"address", "add", address, "dev", "near0"});
  IP({"route", "add", "default", "via", "10.1.0.254"});
  ASSERT_TRUE(service_.WaitForMessage("network changed: "));
  ASSERT_TRUE(service_.WaitForMessage("LAN, 1 of 1", 2));
  EXPECT_EQ(server_->Requests(), 2);
  EXPECT_TRUE(service_.WaitForMessage("outside through near0"));
}

TEST_F(NetworkChanges, ANetworkThatIsLostAndLooksTheSameAgainIsAskedAgain) {
  IP({"address", "delete", "10.1.0.1/24", "dev", "near0"});
  IP({"address", "add", "10.1.0.1/24", "dev", "near0"});
  EXPECT_TRUE(service_.WaitForMessage("LAN, 1 of 1", 2));
  EXPECT_EQ(server_->Requests(), 2);
}

TEST_F(NetworkChanges, TheAnswerOfALostNetworkIsNotServed) {
  service_.StopTime();  // so that nothing is gathered
  IP({"address", "delete", "10.1.0.1/24", "dev", "near0"});
  EXPECT_TRUE(service_.WaitForLocation(kStore, Wayfinder::kDeciding));
  IP({"address", "add", "10.1.0.1/24", "dev", "near0"});
  service_.PassTime(Wayfinding::LocationLoop::kGatheringTime);
  EXPECT_TRUE(service_.WaitForLocation(kStore, Wayfinder::kLAN));
}

TEST_F(NetworkChanges, ALossDuringARoundBeginsItAfresh) {
  TestSupport::HangingResolver hanging;
  std::atomic<int> lookups = 0;
  RecordedService service([&lookups, hang = hanging.Resolver()](const std::string& host) {
    return ++lookups == 1 ? hang(host) : std::vector<std::string>{"10.1.0.2"};
  });
  service.SetStores({{kStore, {"http://intranet.example/"}, {}}});
  ASSERT_TRUE(TestSupport::ComesTrue([&lookups] { return lookups == 1; }));
  IP({"address", "delete", "10.1.0.1/24", "dev", "near0"});
  IP({"address", "add", "10.1.0.1/24", "dev", "near0"});
  EXPECT_TRUE(service.WaitForLocation(kStore, Wayfinder::kLAN));
  EXPECT_THAT(service.Changes(), testing::ElementsAre(Pair(kStore, Wayfinder::kLAN)));
}

TEST_F(NetworkChanges, AStoreIsDecidedTenSecondsAfterTheFirstEvent) {
  TestSupport::HangingResolver hanging;
  std::atomic<bool> hangs = false;
  RecordedService service([&hangs, hang = hanging.Resolver()](const std::string& host) {
    return hangs ? hang(host) : std::vector<std::string>{"10.1.0.2"};
  });
  std::vector<std::string> beacons;  // more than are looked up at once
  for (int i = 0; i < 50; ++i) beacons.push_back("http://host" + std::to_string(i) + ".example/");
  service.StopTime();
  service.SetStores({{kStore, beacons, {}}});
  ASSERT_TRUE(service.WaitForLocation(kStore, Wayfinder::kLAN)) << testing::PrintToString(service.Messages());
  hangs = true;
  IP({"address", "delete", "10.1.0.1/24", "dev", "near0"});
  ASSERT_TRUE(service.WaitForLocation(kStore, Wayfinder::kDeciding));
  IP({"address", "add", "10.1.0.1/24", "dev", "near0"});
  service.PassTime(std::chrono::seconds(1));
  ASSERT_TRUE(TestSupport::ComesTrue([&hanging] { return !hanging.Asked().empty(); }));
  service.PassTime(std::chrono::seconds(8));
  EXPECT_EQ(service.LocationOf(kStore), Wayfinder::kDeciding);
  service.PassTime(std::chrono::seconds(1));
  EXPECT_TRUE(service.WaitForLocation(kStore, Wayfinder::kNone))
      << testing::PrintToString(service.Messages());
}

TEST_F(NetworkChanges, WhatALinkOutsideTheNetworkLosesDoesNotCount) {
  IP({"link", "add", "container0", "type", "veth", "peer", "name", "container1"});
  IP({"address", "add", "10.9.0.1/24", "dev", "container0"});
  service_.SetStores({{kStore, {"http://10.1.0.3/"}, {}}});
  ASSERT_TRUE(service_.WaitForMessage("repetition 1"));
  const auto before =
      static_cast<std::ptrdiff_t>(service_.Messages().size());  // its own link may have come late
  IP({"address", "delete", "10.9.0.1/24", "dev", "container0"});
  ASSERT_TRUE(service_.WaitForMessage("repetition 3")) << "longer than events are gathered";
  const std::vector<std::string> messages = service_.Messages();
  EXPECT_THAT(std::vector(messages.begin() + before, messages.end()),
              testing::Each(testing::Not(testing::StartsWith("network changed"))));
}

TEST_F(NetworkChanges, EventsThatGotLostMayHaveBeenALoss) {
  const auto monitor = Wayfinding::NetworkMonitor::Open();
  ASSERT_TRUE(monitor);
  const TestSupport::TemporaryFolder folder;
  const std::string batch = folder.Path() / "routes";
  std::ofstream commands(batch);
  for (int i = 0; i < 10'000; ++i)
    commands << "route add 172." << 16 + i / 65536 << '.' << i / 256 % 256 << '.' << i % 256
             << "/32 via 10.1.0.2\n";
  commands.close();
  IP({"-batch", batch});
  const Wayfinding::NetworkEvents events = monitor->Take();
  EXPECT_TRUE(events.any);
  EXPECT_TRUE(events.mayHaveLostAny);
}

TEST_F(NetworkChanges, LinksWithoutAnAddressOfTheNetworkDoNotCount) {
  IP({"link", "add", "container0", "type", "veth", "peer", "name", "container1"});
  IP({"link", "set", "container0", "up"});
  IP({"link", "set", "container1", "up"});
  IP({"link", "delete", "container0"});
  service_.SetStores({{kStore, {"http://10.1.0.3/"}, {}}});
  ASSERT_TRUE(service_.WaitForMessage("repetition 3")) << "longer than events are gathered";
  EXPECT_THAT(service_.Messages(), testing::Each(testing::Not(testing::StartsWith("network changed"))));
}

}  // namespace

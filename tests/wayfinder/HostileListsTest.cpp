#include "libs/Wayfinder/Wayfinder.h"
#include "support/LoopbackListener.h"
#include "support/RawServer.h"
#include "wayfinder/HangingResolver.h"
#include "wayfinder/ProcessCounts.h"
#include "wayfinder/RecordedService.h"
#include "wayfinder/Responses.h"

#include <gmock/gmock.h>

using std::chrono::seconds;
using TestSupport::ComesTrue;
using TestSupport::OpenDescriptors;
using TestSupport::RecordedService;
using TestSupport::RunningThreads;

namespace {

// Beacons that answer nothing, refuse, and are no addresses.
std::vector<std::string> HostileBeacons(std::size_t count, std::uint16_t silentPort) {
  std::vector<std::string> beacons;
  for (std::size_t i = 0; beacons.size() < count; ++i) {
    const std::string number = std::to_string(i);
    beacons.push_back("http://127.0.0.1:" + std::to_string(silentPort) + "/" + number);
    beacons.push_back("no address " + number);
    beacons.push_back("http://127.0.0.1:1/" + number);
    beacons.push_back("localhost:" + number);
  }
  return beacons;
}

TEST(HostileLists, TenThousandBeaconsMakeNoAnswerLateAndLeaveNothingBehind) {
  const TestSupport::LoopbackListener silent;
  const long descriptors = OpenDescriptors();
  const long threads = RunningThreads();
  {
    RecordedService service;
    service.StopTime();
    service.SetStores({{"https://store", HostileBeacons(10'000, silent.port), {}}});
    ASSERT_TRUE(service.WaitForMessage("network")) << "the round has not begun";
    service.PassTime(seconds(9));
    EXPECT_EQ(service.LocationOf("https://store"), Wayfinder::kDeciding);
    service.PassTime(seconds(1));
    ASSERT_TRUE(service.WaitForLocation("https://store", Wayfinder::kNone));
    EXPECT_LE(RunningThreads(), threads + 1);
    EXPECT_LE(OpenDescriptors(), descriptors + 100);
    EXPECT_TRUE(service.WaitForMessage("store https://store: none, 0 of 10000 internal beacons answered"));
    EXPECT_TRUE(service.WaitForMessage("repetition 1")) << "the round has not ended";
  }
  EXPECT_TRUE(ComesTrue([descriptors] { return OpenDescriptors() <= descriptors; }));
  EXPECT_TRUE(ComesTrue([threads] { return RunningThreads() <= threads; }));
}

TEST(HostileLists, NamesThatAreNeverFoundMakeNoAnswerLateAndLeaveNothingBehind) {
  const long descriptors = OpenDescriptors();
  const long threads = RunningThreads();
  TestSupport::HangingResolver resolver;
  {
    std::vector<std::string> beacons;
    for (int i = 0; i < 1000; ++i) beacons.push_back("https://host" + std::to_string(i) + ".example");
    RecordedService service(resolver.Resolver());
    service.StopTime();
    service.SetStores({{"https://store", beacons, {}}});
    ASSERT_TRUE(service.WaitForMessage("network")) << "the round has not begun";
    EXPECT_EQ(service.LocationOf("https://store"), Wayfinder::kDeciding);
    service.PassTime(seconds(10));
    ASSERT_TRUE(service.WaitForLocation("https://store", Wayfinder::kNone));
    const long withLookups = RunningThreads();
    EXPECT_LE(withLookups, threads + 1 + static_cast<long>(Wayfinding::HostLookups::kMostThreads));
    service.End();
    EXPECT_TRUE(ComesTrue([withLookups] { return RunningThreads() < withLookups; })) << "it waits for them";
  }
  resolver.Release();
  EXPECT_TRUE(ComesTrue([threads] { return RunningThreads() <= threads; }));
  EXPECT_TRUE(ComesTrue([descriptors] { return OpenDescriptors() <= descriptors; }));
}

TEST(HostileLists, NamesThatHangKeepNoOtherStoreWaiting) {
  const TestSupport::RawServer server({TestSupport::kGood});
  TestSupport::HangingResolver hanging;
  const auto resolve = [hang = hanging.Resolver()](const std::string& host) {
    return host == "good.example" ? std::vector<std::string>{"127.0.0.1"} : hang(host);
  };
  const std::string good = "http://good.example:" + std::to_string(server.Port()) + "/";
  RecordedService service(resolve);
  for (int list = 0; list < 5; ++list) {
    std::vector<std::string> names;
    for (int i = 0; i < 40; ++i)
      names.push_back("https://host" + std::to_string(i) + ".list" + std::to_string(list) + ".example");
    service.SetStores({{"https://hanging", names, {}}, {"https://good", {good, good + "2", good + "3"}, {}}});
    ASSERT_TRUE(service.WaitForLocation("https://good", Wayfinder::kLAN))
        << testing::PrintToString(service.Messages());
  }
  EXPECT_THAT(service.Changes(),
              testing::Not(testing::Contains(testing::Pair("https://good", Wayfinder::kNone))));
}

TEST(HostileLists, NamesOfThisMachineAreNotLookedUpHoweverTheyAreSpelt) {
  const TestSupport::RawServer server({TestSupport::kGood});
  const std::string port = std::to_string(server.Port());
  std::vector<std::string> beacons;
  for (int i = 0; i < 50; ++i)
    beacons.push_back("http://store" + std::to_string(i) + ".localhost.:" + port + "/");
  const TestSupport::HangingResolver resolver;
  RecordedService service(resolver.Resolver());
  service.SetStores({{"https://store", beacons, {}}});
  EXPECT_TRUE(service.WaitForLocation("https://store", Wayfinder::kLAN))
      << testing::PrintToString(service.Messages());
}

TEST(HostileLists, OneStoresManyBeaconsDoNotKeepAnotherStoreWaiting) {
  const TestSupport::LoopbackListener silent;
  RecordedService service;
  service.StopTime();  // so that nothing is cut off
  service.SetStores({{"https://many", HostileBeacons(4'000, silent.port), {}},
                     {"https://few", {"http://127.0.0.1:1/"}, {}}});
  ASSERT_TRUE(service.WaitForLocation("https://few", Wayfinder::kNone));
  EXPECT_EQ(service.LocationOf("https://many"), Wayfinder::kDeciding);
}

TEST(HostileLists, ManyInternalBeaconsDoNotKeepAnExternalOneWaiting) {
  const TestSupport::LoopbackListener silent;
  const TestSupport::RawServer server({TestSupport::kGood});
  RecordedService service;
  service.StopTime();  // so that nothing is cut off
  service.SetStores({{"https://store",
                      HostileBeacons(4'000, silent.port),
                      {"http://127.0.0.1:" + std::to_string(server.Port()) + "/"}}});
  EXPECT_TRUE(ComesTrue([&server] { return server.Requests().size() == 1; }));
  EXPECT_EQ(service.LocationOf("https://store"), Wayfinder::kDeciding);
}

TEST(HostileLists, SilentServersLeaveAPlaceForABeaconWhoseNameIsFoundLater) {
  const TestSupport::LoopbackListener silent;
  const TestSupport::RawServer server({TestSupport::kGood});
  const std::string silentBeacon = "http://127.0.0.1:" + std::to_string(silent.port) + "/";
  std::vector<std::string> many;
  for (int i = 0; i < 200; ++i) many.push_back(silentBeacon + std::to_string(i));
  RecordedService service([](const std::string& /*host*/) { return std::vector<std::string>{"127.0.0.1"}; });
  service.StopTime();  // so that nothing is cut off
  service.SetStores({{"https://many", many, {}},
                     {"https://silent", {silentBeacon}, {}},
                     {"https://good", {"http://good.example:" + std::to_string(server.Port()) + "/"}, {}}});
  ASSERT_TRUE(service.WaitForLocation("https://good", Wayfinder::kLAN))
      << testing::PrintToString(service.Messages());
  EXPECT_EQ(service.LocationOf("https://many"), Wayfinder::kDeciding);
}

TEST(HostileLists, TheEndWaitsForNoTransfer) {
  const TestSupport::LoopbackListener silent;
  const long descriptors = OpenDescriptors();
  RecordedService service;
  service.SetStores({{"https://store", HostileBeacons(1'000, silent.port), {}}});
  ASSERT_TRUE(service.WaitForMessage("network"));
  service.End();
  EXPECT_LE(OpenDescriptors(), descriptors) << "the thread has not ended, or not its transfers";
}

TEST(HostileLists, AnAddressCannotForgeAMessage) {
  RecordedService service;
  const std::string url = "https://store\nstore other: LAN";
  service.SetStores({{url, {"bad\naddress"}, {}}});
  ASSERT_TRUE(service.WaitForMessage(": none"));
  EXPECT_THAT(service.Messages(), testing::Each(testing::Not(testing::HasSubstr("\n"))));
  EXPECT_THAT(service.ReasonFor(url),
              testing::AllOf(testing::HasSubstr("bad address"), testing::Not(testing::HasSubstr("\n"))));
}

}  // namespace

#include "libs/Wayfinder/Wayfinder.h"
#include "support/LoopbackListener.h"
#include "support/RawServer.h"
#include "support/TrustedAuthority.h"
#include "support/WebServer.h"
#include "wayfinder/ProcessCounts.h"
#include "wayfinder/RecordedService.h"
#include "wayfinder/Responses.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <future>
#include <memory>
#include <set>
#include <thread>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Pair;
using TestSupport::kGood;
using TestSupport::kStore;
using TestSupport::kToPortal;
using TestSupport::kUnavailable;
using TestSupport::LoopbackListener;
using TestSupport::RawServer;
using TestSupport::RecordedService;
using TestSupport::Response;
using TestSupport::ServerBlock;
using TestSupport::TrustedAuthority;
using TestSupport::WebServer;

namespace {

std::string At(const RawServer& server) {
  return "http://127.0.0.1:" + std::to_string(server.Port()) + "/";
}

std::set<std::string> ThreadNumbers() {
  std::set<std::string> numbers;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/task"))
    numbers.insert(entry.path().filename());
  return numbers;
}

// How often a thread has waited for something.
long Wakings(const std::string& threadNumber) {
  std::ifstream status("/proc/self/task/" + threadNumber + "/status");
  std::string word;
  long count = -1;
  while (status >> word && word != "voluntary_ctxt_switches:") {
  }
  status >> count;
  return count;
}

class LocationServiceTest : public testing::Test {
 protected:
  void ExpectLocation(std::uint32_t location) {
    EXPECT_TRUE(service_.WaitForLocation(kStore, location)) << testing::PrintToString(service_.Messages());
    EXPECT_EQ(service_.LocationOf(kStore), location);
  }

  const RawServer good_{{kGood}};
  const RawServer bad_{{kUnavailable}};
  const RawServer elsewhere_{{kToPortal}};
  RecordedService service_;
};

TEST_F(LocationServiceTest, AStoreIsDecidingUntilItsBeaconsAnswered) {
  const LoopbackListener silent;
  service_.SetStores({{kStore, {"http://127.0.0.1:" + std::to_string(silent.port)}, {}}});
  EXPECT_EQ(service_.LocationOf(kStore), Wayfinder::kDeciding);
}

TEST_F(LocationServiceTest, InternalBeaconsThatAnswerMakeALAN) {
  const WebServer server(TrustedAuthority().TlsServerBlock("good"));
  service_.SetStores({{kStore, {server.Address("https"), At(good_)}, {At(bad_)}}});
  ExpectLocation(Wayfinder::kLAN);
  EXPECT_THAT(service_.Messages(),
              testing::Contains("store https://store.example/Main: LAN, 2 of 2 internal beacons answered"));
}

TEST_F(LocationServiceTest, SomeInternalBeaconsMakeItPartlyInternal) {
  service_.SetStores({{kStore, {At(good_), At(bad_), "no address"}, {}}});
  ExpectLocation(Wayfinder::kPartlyInternal);
  EXPECT_TRUE(service_.WaitForMessage("partly internal, 1 of 3 internal beacons answered"));
}

TEST_F(LocationServiceTest, AnExternalBeaconAloneMakesItOutside) {
  service_.SetStores({{kStore, {At(bad_)}, {At(good_)}}});
  ExpectLocation(Wayfinder::kOutside);
}

TEST_F(LocationServiceTest, SomebodyElsesAnswerMakesItAHotspot) {
  service_.SetStores({{kStore, {At(bad_)}, {At(elsewhere_)}}});
  ExpectLocation(Wayfinder::kHotspot);
  EXPECT_TRUE(service_.WaitForMessage("redirect to portal.example"));
}

TEST_F(LocationServiceTest, ASignInPageThatSaysSoMakesItAHotspot) {
  const RawServer portal({Response("511 Network Authentication Required")});
  service_.SetStores({{kStore, {At(bad_)}, {At(portal)}}});
  ExpectLocation(Wayfinder::kHotspot);
}

TEST_F(LocationServiceTest, ACertificateForAnotherNameMakesItAHotspot) {
  const WebServer portal(TrustedAuthority().TlsServerBlock("wrong-host"));
  service_.SetStores({{kStore, {At(bad_)}, {portal.Address("https")}}});
  ExpectLocation(Wayfinder::kHotspot);
}

TEST_F(LocationServiceTest, NoAnswerMakesItNone) {
  service_.SetStores({{kStore, {At(bad_)}, {At(bad_)}}});
  ExpectLocation(Wayfinder::kNone);
}

TEST_F(LocationServiceTest, AStoreWithoutInternalBeaconsIsJudgedByItsURL) {
  service_.SetStores({{At(good_) + "Main", {}, {}}});
  EXPECT_TRUE(service_.WaitForLocation(At(good_) + "Main", Wayfinder::kLAN));
  EXPECT_THAT(good_.Requests(), ElementsAre(HasSubstr("HEAD /Main ")));
}

TEST_F(LocationServiceTest, ABeaconOfSeveralStoresIsAskedOnce) {
  service_.SetStores({{kStore, {At(good_)}, {}}, {"https://other", {At(good_)}, {At(good_)}}});
  ExpectLocation(Wayfinder::kLAN);
  EXPECT_TRUE(service_.WaitForLocation("https://other", Wayfinder::kLAN));
  EXPECT_EQ(good_.Requests().size(), 1U);
}

TEST_F(LocationServiceTest, ABeaconCountsAsOftenAsItIsNamedAndIsAskedOnce) {
  const std::string address = At(good_);
  const std::string alike = "HTTP" + address.substr(4, address.size() - 5);
  service_.SetStores(
      {{kStore, {address, alike, "no address", "nor is this"}, {}}, {"https://other", {alike}, {}}});
  EXPECT_TRUE(
      service_.WaitForMessage("partly internal, 2 of 4 internal beacons answered (no address: no address)"));
  EXPECT_TRUE(service_.WaitForLocation("https://other", Wayfinder::kLAN));
  EXPECT_EQ(good_.Requests().size(), 1U);
}

TEST_F(LocationServiceTest, AReasonNamesTheStoresOwnBeaconsAlsoWhereTheyAreNoAddresses) {
  service_.SetStores({{kStore, {"not one"}, {}}, {"https://other.example", {"nor this"}, {}}});
  EXPECT_TRUE(service_.WaitForMessage("not one: no address")) << testing::PrintToString(service_.Messages());
  EXPECT_TRUE(service_.WaitForMessage("nor this: no address")) << testing::PrintToString(service_.Messages());
}

TEST_F(LocationServiceTest, AStoreIsDecidedThoughAnotherListComesInBetween) {
  const std::vector<TestSupport::StoreAndBeacons> stores = {{kStore, {"no address"}, {}},
                                                            {"https://other", {"nor is this"}, {}}};
  service_.WhenItLogs(std::string("store ") + kStore, [&] {
    service_.SetStores({stores[0], stores[1], {"https://new", {At(good_)}, {}}});
  });
  service_.SetStores(stores);
  EXPECT_TRUE(service_.WaitForLocation("https://new", Wayfinder::kLAN));
  EXPECT_EQ(service_.LocationOf(kStore), Wayfinder::kNone);
  EXPECT_EQ(service_.LocationOf("https://other"), Wayfinder::kNone);
}

TEST_F(LocationServiceTest, AnotherListIsDecidedAfreshAndEveryChangeGivenOut) {
  service_.SetStores({{kStore, {At(good_)}, {}}});
  ExpectLocation(Wayfinder::kLAN);
  service_.SetStores({{kStore, {At(bad_)}, {At(good_)}}});
  ExpectLocation(Wayfinder::kOutside);
  EXPECT_THAT(service_.Changes(),
              ElementsAre(Pair(kStore, Wayfinder::kLAN), Pair(kStore, Wayfinder::kDeciding),
                          Pair(kStore, Wayfinder::kOutside)));
}

TEST_F(LocationServiceTest, TheSameListAgainAsksNobody) {
  service_.SetStores({{kStore, {At(good_)}, {}}});
  ExpectLocation(Wayfinder::kLAN);
  service_.SetStores({{kStore, {At(good_)}, {}}});
  EXPECT_EQ(service_.LocationOf(kStore), Wayfinder::kLAN);
  service_.SetStores({{kStore, {At(bad_)}, {}}});
  ExpectLocation(Wayfinder::kNone);
  EXPECT_EQ(good_.Requests().size(), 1U);
}

// Stores of several servers, of which some answer.
class ChangedListTest : public LocationServiceTest {
 protected:
  static constexpr char kOther[] = "https://other";

  TestSupport::StoreAndBeacons Other(const RawServer& server) { return {kOther, {At(server)}, {}}; }

  std::size_t Given(const std::string& url, std::uint32_t location) const {
    const auto changes = service_.Changes();
    return static_cast<std::size_t>(std::count(changes.begin(), changes.end(), std::pair(url, location)));
  }

  const RawServer second_{{kGood}};
  const RawServer third_{{kGood}};
};

TEST_F(ChangedListTest, OneStoreThatChangesIsAskedForAlone) {
  const TestSupport::StoreAndBeacons third{"https://third", {At(third_)}, {}};
  service_.SetStores({{kStore, {At(good_)}, {}}, Other(second_), third});
  for (const char* url : {kStore, kOther, "https://third"})
    ASSERT_TRUE(service_.WaitForLocation(url, Wayfinder::kLAN));
  service_.SetStores({{kStore, {At(good_)}, {}}, {kOther, {At(bad_)}, {At(second_)}}, third});
  EXPECT_EQ(service_.LocationOf(kStore), Wayfinder::kLAN);
  EXPECT_EQ(service_.LocationOf("https://third"), Wayfinder::kLAN);
  ASSERT_TRUE(service_.WaitForLocation(kOther, Wayfinder::kOutside));
  EXPECT_EQ(good_.Requests().size(), 1U);
  EXPECT_EQ(third_.Requests().size(), 1U);
  EXPECT_EQ(second_.Requests().size(), 2U);
  EXPECT_EQ(Given(kStore, Wayfinder::kDeciding) + Given("https://third", Wayfinder::kDeciding), 0U);
}

TEST_F(ChangedListTest, AStoreThatComesIsAskedForAlone) {
  service_.SetStores({{kStore, {At(good_)}, {}}});
  ExpectLocation(Wayfinder::kLAN);
  service_.SetStores({Other(second_), {kStore, {At(good_)}, {}}});
  EXPECT_EQ(service_.LocationOf(kStore), Wayfinder::kLAN);
  ASSERT_TRUE(service_.WaitForLocation(kOther, Wayfinder::kLAN));
  EXPECT_EQ(good_.Requests().size(), 1U);
}

TEST_F(ChangedListTest, AStoreThatGoesLeavesTheOthersUnasked) {
  service_.SetStores({Other(second_), {kStore, {At(good_)}, {}}});
  ExpectLocation(Wayfinder::kLAN);
  ASSERT_TRUE(service_.WaitForLocation(kOther, Wayfinder::kLAN));
  service_.SetStores({{kStore, {At(good_)}, {}}});
  service_.SetStores({{"https://third", {At(third_)}, {}}, {kStore, {At(good_)}, {}}});
  ASSERT_TRUE(service_.WaitForLocation("https://third", Wayfinder::kLAN));
  EXPECT_EQ(service_.LocationOf(kStore), Wayfinder::kLAN);
  EXPECT_EQ(good_.Requests().size(), 1U);
  EXPECT_EQ(second_.Requests().size(), 1U);
}

TEST_F(ChangedListTest, AStoreThatGoesAndComesBackAtOnceIsDecidedAgain) {
  service_.SetStores({Other(second_), {kStore, {At(good_)}, {}}});
  ASSERT_TRUE(service_.WaitForLocation(kOther, Wayfinder::kLAN));
  ExpectLocation(Wayfinder::kLAN);
  service_.SetStores({Other(second_)});
  service_.SetStores({Other(second_), {kStore, {At(good_)}, {}}});
  service_.SetStores({Other(second_), {kStore, {At(good_)}, {}}, {"https://third", {At(third_)}, {}}});
  ASSERT_TRUE(service_.WaitForLocation("https://third", Wayfinder::kLAN));
  ASSERT_TRUE(service_.WaitForLocation(kStore, Wayfinder::kLAN));
  EXPECT_EQ(service_.LocationOf(kStore), Wayfinder::kLAN);
  EXPECT_EQ(second_.Requests().size(), 1U);
}

TEST_F(ChangedListTest, AStoreWithoutAnAnswerIsAskedAgainInItsTurnOnly) {
  service_.StopTime();
  service_.SetStores({{kStore, {At(bad_)}, {}}});
  ExpectLocation(Wayfinder::kNone);
  ASSERT_TRUE(service_.WaitForMessage("repetition 1"));
  service_.SetStores({{kStore, {At(bad_)}, {}}, Other(second_)});
  ASSERT_TRUE(service_.WaitForLocation(kOther, Wayfinder::kLAN));
  EXPECT_EQ(service_.LocationOf(kStore), Wayfinder::kNone);
  ASSERT_TRUE(service_.WaitForMessage("stores without an answer: 1, repetition 1", 2));
  EXPECT_EQ(bad_.Requests().size(), 1U);
  service_.PassTime(std::chrono::seconds(1));
  EXPECT_TRUE(service_.WaitForMessage("stores without an answer: 1, repetition 2"));
  EXPECT_EQ(second_.Requests().size(), 1U);
  EXPECT_EQ(Given(kStore, Wayfinder::kDeciding), 0U);
}

// Whoever was still being asked when the list changed.
TEST_F(ChangedListTest, AStoreThatIsBeingAskedIsAskedToTheEnd) {
  const LoopbackListener silent;
  const std::string silentAddress = "http://127.0.0.1:" + std::to_string(silent.port);
  service_.SetStores({{kStore, {silentAddress}, {}}, Other(second_)});
  ASSERT_TRUE(service_.WaitForLocation(kOther, Wayfinder::kLAN));
  service_.SetStores({{kStore, {silentAddress}, {}}, Other(second_), {"https://third", {At(third_)}, {}}});
  ASSERT_TRUE(service_.WaitForLocation("https://third", Wayfinder::kLAN));
  EXPECT_TRUE(service_.WaitForLocation(kStore, Wayfinder::kNone));
  EXPECT_EQ(second_.Requests().size(), 1U);
}

TEST_F(ChangedListTest, AStoreThatGoesWhileItIsBeingAskedEndsTheAsking) {
  const LoopbackListener silent;
  const std::string silentAddress = "http://127.0.0.1:" + std::to_string(silent.port);
  service_.SetStores({{kStore, {silentAddress}, {}}, Other(second_)});
  ASSERT_TRUE(service_.WaitForLocation(kOther, Wayfinder::kLAN));
  service_.SetStores({Other(second_)});
  service_.PassTime(std::chrono::minutes(5));
  EXPECT_TRUE(TestSupport::ComesTrue([this] {
    EXPECT_EQ(service_.LocationOf(kOther), Wayfinder::kLAN);
    return second_.Requests().size() == 2;
  }));
}

TEST_F(ChangedListTest, TheAskingEndsWithItsStoreThoughNothingIsOpenAboutTheOthers) {
  const WebServer proven(TrustedAuthority().TlsServerBlock("good"));
  const LoopbackListener silent;
  const TestSupport::StoreAndBeacons other{kOther, {At(bad_)}, {proven.Address("https")}};
  service_.SetStores({{kStore, {"http://127.0.0.1:" + std::to_string(silent.port)}, {}}, other});
  ASSERT_TRUE(service_.WaitForLocation(kOther, Wayfinder::kOutside));
  service_.SetStores({other});
  service_.PassTime(std::chrono::minutes(5));
  EXPECT_TRUE(TestSupport::ComesTrue([this] {
    EXPECT_EQ(service_.LocationOf(kOther), Wayfinder::kOutside);
    return bad_.Requests().size() == 2;
  }));
}

TEST_F(ChangedListTest, ABeaconThatCouldNotMatterIsOpenStillWhenAnotherStoreComes) {
  const WebServer proven(TrustedAuthority().TlsServerBlock("good"));
  const LoopbackListener silent;
  const TestSupport::StoreAndBeacons other{
      kOther, {proven.Address("https")}, {"http://127.0.0.1:" + std::to_string(silent.port)}};
  service_.SetStores({other});
  ASSERT_TRUE(service_.WaitForLocation(kOther, Wayfinder::kLAN));
  service_.SetStores({other, {kStore, {At(good_)}, {}}});
  ExpectLocation(Wayfinder::kLAN);
  EXPECT_EQ(service_.LocationOf(kOther), Wayfinder::kLAN);
  EXPECT_EQ(Given(kOther, Wayfinder::kDeciding), 0U);
}

TEST_F(ChangedListTest, TheDelaysOfAStoreWithoutAnAnswerGoOn) {
  service_.SetStores({Other(second_), {kStore, {At(bad_)}, {}}});
  ASSERT_TRUE(service_.WaitForMessage("repetition 2"));
  service_.SetStores({{kStore, {At(bad_)}, {}}});
  EXPECT_TRUE(service_.WaitForMessage("repetition 3"));
  const auto messages = service_.Messages();
  EXPECT_EQ(
      std::count(messages.begin(), messages.end(), "stores without an answer: 1, repetition 1 in 0.7 s"), 1);
}

TEST_F(ChangedListTest, AllAreAskedWhenTheAnswersAreOld) {
  service_.SetStores({{kStore, {At(good_)}, {}}});
  ExpectLocation(Wayfinder::kLAN);
  service_.SetStores({{kStore, {At(good_)}, {}}, Other(second_)});
  ASSERT_TRUE(service_.WaitForLocation(kOther, Wayfinder::kLAN));
  service_.PassTime(std::chrono::minutes(5));
  EXPECT_EQ(service_.LocationOf(kStore), Wayfinder::kLAN);
  EXPECT_TRUE(TestSupport::ComesTrue(
      [this] { return good_.Requests().size() == 2 && second_.Requests().size() == 2; }));
}

TEST_F(LocationServiceTest, OldAnswersAreServedWhileTheyAreRefreshed) {
  const RawServer server({kGood, kUnavailable});
  service_.SetStores({{kStore, {At(server)}, {}}});
  ExpectLocation(Wayfinder::kLAN);
  service_.PassTime(std::chrono::minutes(4));
  EXPECT_EQ(service_.LocationOf(kStore), Wayfinder::kLAN);
  EXPECT_EQ(server.Requests().size(), 1U);
  service_.PassTime(std::chrono::minutes(1));
  EXPECT_EQ(service_.LocationOf(kStore), Wayfinder::kLAN);
  ExpectLocation(Wayfinder::kNone);
  EXPECT_THAT(service_.Changes(), ElementsAre(Pair(kStore, Wayfinder::kLAN), Pair(kStore, Wayfinder::kNone)));
}

TEST_F(LocationServiceTest, ARoundWithoutAnAnswerIsRepeated) {
  const RawServer server({kUnavailable, kUnavailable, kGood});
  service_.SetStores({{kStore, {At(server)}, {}}});
  ExpectLocation(Wayfinder::kLAN);
  EXPECT_THAT(service_.Messages(),
              testing::IsSupersetOf({"stores without an answer: 1, repetition 1 in 0.7 s",
                                     "stores without an answer: 1, repetition 2 in 1.4 s"}));
  EXPECT_THAT(service_.Changes(), ElementsAre(Pair(kStore, Wayfinder::kNone), Pair(kStore, Wayfinder::kLAN)))
      << "it is not undecided again";
}

TEST_F(LocationServiceTest, AStoreWithoutAnAnswerIsAskedAgainBesideOneThatHasOne) {
  const RawServer late({kUnavailable, kUnavailable, kGood});
  const RawServer portal({kToPortal, kUnavailable});
  service_.SetStores({{"https://other", {At(good_)}, {}},
                      {kStore, {At(late)}, {}},
                      {"https://portal", {At(bad_)}, {At(portal)}}});
  ExpectLocation(Wayfinder::kLAN);
  EXPECT_TRUE(service_.WaitForLocation("https://portal", Wayfinder::kNone));
  EXPECT_EQ(service_.LocationOf("https://other"), Wayfinder::kLAN);
  EXPECT_EQ(good_.Requests().size(), 1U) << "who answered is not asked again";
  EXPECT_TRUE(service_.WaitForMessage("stores without an answer: 2, repetition 2 in 1.4 s"));
  EXPECT_TRUE(service_.WaitForMessage("stores without an answer: 1, repetition 3 in 2.8 s"));
}

TEST_F(LocationServiceTest, AStoreThatLosesItsAnswerIsAskedAgainSoon) {
  const RawServer server({kGood, kUnavailable, kGood});
  service_.SetStores({{kStore, {At(server)}, {}}, {"https://silent", {At(bad_)}, {}}});
  ASSERT_TRUE(service_.WaitForMessage("stores without an answer: 1, repetition 3"));
  service_.PassTime(std::chrono::minutes(5));
  EXPECT_EQ(service_.LocationOf(kStore), Wayfinder::kLAN);
  EXPECT_TRUE(service_.WaitForMessage("stores without an answer: 2, repetition 1 in 0.7 s"));
  ExpectLocation(Wayfinder::kLAN);
}

TEST_F(LocationServiceTest, AStoreDoesNotWaitForBeaconsThatCannotMatter) {
  const WebServer server(TrustedAuthority().TlsServerBlock("good"));
  const LoopbackListener listener;
  const std::string silent = "http://127.0.0.1:" + std::to_string(listener.port);
  service_.SetStores({{"https://silent", {silent}, {}}, {kStore, {server.Address("https")}, {silent}}});
  ASSERT_TRUE(service_.WaitForLocation("https://silent", Wayfinder::kNone));
  EXPECT_THAT(service_.Changes(),
              ElementsAre(Pair(kStore, Wayfinder::kLAN), Pair("https://silent", Wayfinder::kNone)));
}

TEST_F(LocationServiceTest, AFailureIsToldAndDoesNotEndTheDeciding) {
  service_.FailOnce();
  service_.SetStores({{kStore, {At(good_)}, {}}});
  EXPECT_TRUE(service_.WaitForMessage("deciding failed and begins anew: a failure of the test's"));
  ExpectLocation(Wayfinder::kLAN);
}

TEST_F(LocationServiceTest, TheEndDoesNotWaitAfterAFailure) {
  const long threads = TestSupport::RunningThreads();
  RecordedService service({}, std::chrono::hours(1));
  service.FailOnce();
  service.SetStores({{kStore, {At(good_)}, {}}});
  ASSERT_TRUE(service.WaitForMessage("a failure of the test's"));
  service.End();
  EXPECT_TRUE(TestSupport::ComesTrue([threads] { return TestSupport::RunningThreads() <= threads; }));
}

TEST(LocationServiceEnd, DoesNotWaitForEverForAThreadThatIsHeldUp) {
  struct Hold {
    std::promise<void> reached;
    std::promise<void> released;
  };
  const long threads = TestSupport::RunningThreads();
  const auto hold = std::make_shared<Hold>();
  Wayfinding::LocationParts parts = Wayfinding::LocationParts::Defaults();
  parts.changed = [hold](const std::string& /*storeURL*/, Wayfinding::NetworkLocation /*location*/) {
    hold->reached.set_value();
    hold->released.get_future().wait();
  };
  {
    Wayfinding::LocationService service(std::move(parts));
    service.SetStores({std::make_shared<const PropertyList::Dictionary>(
        PropertyList::Dictionary{{"StoreURL", "http://127.0.0.1:1/"}})});
    ASSERT_EQ(hold->reached.get_future().wait_for(std::chrono::seconds(20)), std::future_status::ready);
  }
  hold->released.set_value();
  EXPECT_TRUE(TestSupport::ComesTrue([threads] { return TestSupport::RunningThreads() <= threads; }));
}

TEST_F(LocationServiceTest, NothingWakesTheThreadWhenNothingIsDue) {
  const std::set<std::string> others = ThreadNumbers();
  service_.SetStores({{kStore, {At(good_)}, {}}});
  ExpectLocation(Wayfinder::kLAN);
  std::string number;
  for (const std::string& thread : ThreadNumbers())
    if (!others.contains(thread)) number = thread;
  ASSERT_FALSE(number.empty());
  // The machine's network may change in the meantime, but not all the time.
  bool wasIdle = false;
  for (int i = 0; i < 5 && !wasIdle; ++i) {
    const long before = Wakings(number);
    std::this_thread::sleep_for(std::chrono::seconds(2));
    wasIdle = Wakings(number) == before;
  }
  EXPECT_TRUE(wasIdle);
}

TEST_F(LocationServiceTest, ThereIsNoThreadWithoutAStore) {
  const long threads = TestSupport::RunningThreads();
  service_.SetStores({});
  (void)service_.LocationOf(kStore);
  EXPECT_LE(TestSupport::RunningThreads(), threads);
}

TEST_F(LocationServiceTest, AListWithoutStoresEndsTheAsking) {
  service_.SetStores({{kStore, {At(bad_)}, {}}});
  ExpectLocation(Wayfinder::kNone);
  service_.SetStores({});
  service_.SetStores({{kStore, {At(good_)}, {}}});
  ExpectLocation(Wayfinder::kLAN);
}

TEST_F(LocationServiceTest, ManyThreadsMayAskAndReplaceAtOnce) {
  std::vector<std::thread> threads;
  for (int number = 0; number < 4; ++number) {
    threads.emplace_back([this, number] {
      for (int i = 0; i < 50; ++i) {
        service_.SetStores({{kStore, {At(number % 2 == 0 ? good_ : bad_)}, {}}});
        EXPECT_LE(service_.LocationOf(kStore), Wayfinder::kNone);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  service_.SetStores({{kStore, {At(good_)}, {At(bad_)}}});
  ExpectLocation(Wayfinder::kLAN);
}

}  // namespace

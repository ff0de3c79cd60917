#include "libs/Wayfinder/StoreLocations.h"

#include <gmock/gmock.h>

using std::chrono::minutes;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using Wayfinding::LocationDecision;
using Wayfinding::NetworkLocation;
using Wayfinding::StoreBeacons;
using Wayfinding::StoreLocations;
using Wayfinding::StorePtr;

namespace {

class StoreLocationsTest : public testing::Test {
 protected:
  StoreLocationsTest() { EXPECT_TRUE(Replace({{"https://one/X", {"a"}, {}}, {"two", {"b"}, {}}})); }

  bool Replace(const std::vector<StoreBeacons>& stores) {
    std::map<std::string, StoreBeacons> byKey;
    for (const StoreBeacons& store : stores) byKey.emplace(Wayfinding::StoreKey(store.url), store);
    return locations_.Replace(byKey);
  }

  NetworkLocation Find(const std::string& url) {
    return locations_.Find(url, now_).value().decision.location;
  }
  // In the order of their keys.
  StorePtr StoreAt(std::size_t place) { return locations_.Current()->at(place); }
  void Decide(std::size_t store, NetworkLocation location) {
    locations_.Decide(StoreAt(store), {location, "why"}, now_);
  }

  StoreLocations locations_;
  StoreLocations::TimePoint now_{minutes(1000)};
};

TEST_F(StoreLocationsTest, AStoreIsUndecidedUntilItIsDecided) {
  EXPECT_EQ(Find("two"), NetworkLocation::kDeciding);
  Decide(1, NetworkLocation::kOutside);
  EXPECT_EQ(Find("two"), NetworkLocation::kOutside);
  EXPECT_EQ(Find("https://one/X"), NetworkLocation::kDeciding);
}

TEST_F(StoreLocationsTest, TheReasonIsOfTheDecisionAndGoesWithIt) {
  const auto reason = [this] { return locations_.Find("two", now_)->decision.reason; };
  const auto decide = [this](const LocationDecision& decision) {
    locations_.Decide(locations_.Current()->back(), decision, now_);
  };
  EXPECT_EQ(reason(), "");
  decide({NetworkLocation::kLAN, "LAN, first"});
  EXPECT_EQ(reason(), "LAN, first");
  decide({NetworkLocation::kLAN, "LAN, second"});
  EXPECT_EQ(reason(), "LAN, second");
  locations_.ForgetDecisions();
  EXPECT_EQ(reason(), "");
  decide({NetworkLocation::kLAN, "LAN, third"});
  EXPECT_TRUE(Replace({{"two", {"c"}, {}}}));
  EXPECT_EQ(reason(), "");
}

TEST_F(StoreLocationsTest, LetterCaseAndSlashesAtTheEndDoNotCount) {
  Decide(0, NetworkLocation::kLAN);
  EXPECT_EQ(Find("HTTPS://ONE/x//"), NetworkLocation::kLAN);
  EXPECT_FALSE(locations_.Find("https://one", now_));
  EXPECT_FALSE(locations_.Find("", now_));
}

TEST_F(StoreLocationsTest, AnAnswerIsOldAfterFiveMinutes) {
  Decide(0, NetworkLocation::kLAN);
  EXPECT_FALSE(locations_.Find("https://one/x", now_ + minutes(5) - std::chrono::seconds(1))->isOld);
  EXPECT_TRUE(locations_.Find("https://one/x", now_ + minutes(5))->isOld);
  EXPECT_FALSE(locations_.Find("two", now_ + minutes(5))->isOld) << "it is still being decided";
}

TEST_F(StoreLocationsTest, TheSameListChangesNothing) {
  Decide(0, NetworkLocation::kLAN);
  const auto list = locations_.Current();
  EXPECT_FALSE(Replace({{"https://one/X", {"a"}, {}}, {"two", {"b"}, {}}}));
  EXPECT_EQ(Find("https://one/X"), NetworkLocation::kLAN);
  EXPECT_EQ(locations_.Current(), list);
  EXPECT_FALSE(Replace({{"two", {"b"}, {}}, {"https://one/X", {"a"}, {}}})) << "the order does not count";
}

TEST_F(StoreLocationsTest, AStoreKeepsItsLocationWhenOthersComeGoAndChange) {
  Decide(1, NetworkLocation::kLAN);
  EXPECT_TRUE(Replace({{"https://one/X", {"c"}, {}}, {"new", {}, {}}, {"two", {"b"}, {}}}));
  EXPECT_EQ(Find("two"), NetworkLocation::kLAN);
  EXPECT_EQ(Find("https://one/X"), NetworkLocation::kDeciding);
  EXPECT_TRUE(Replace({{"two", {"b"}, {}}}));
  EXPECT_EQ(Find("two"), NetworkLocation::kLAN);
  EXPECT_FALSE(locations_.Find("https://one/X", now_));
  EXPECT_TRUE(locations_.Find("two", now_ + minutes(5))->isOld) << "it is as old as before";
  Decide(0, NetworkLocation::kOutside);
  EXPECT_EQ(Find("two"), NetworkLocation::kOutside);
}

TEST_F(StoreLocationsTest, AStoreThatChangesInAnyWayIsUndecidedAgain) {
  for (const StoreBeacons& changed : std::vector<StoreBeacons>{
           {"TWO", {"b"}, {}}, {"two", {"b", "b"}, {}}, {"two", {"c"}, {}}, {"two", {"b"}, {"x"}}}) {
    Decide(1, NetworkLocation::kLAN);
    ASSERT_EQ(Find("two"), NetworkLocation::kLAN);
    EXPECT_TRUE(Replace({{"https://one/X", {"a"}, {}}, changed}));
    EXPECT_EQ(Find("two"), NetworkLocation::kDeciding);
    EXPECT_TRUE(Replace({{"https://one/X", {"a"}, {}}, {"two", {"b"}, {}}}));
  }
}

TEST_F(StoreLocationsTest, AStoreThatCameBackIsAnother) {
  const StorePtr one = StoreAt(0);
  const StorePtr two = StoreAt(1);
  ASSERT_TRUE(Replace({{"https://one/X", {"a"}, {}}}));
  ASSERT_TRUE(Replace({{"https://one/X", {"a"}, {}}, {"two", {"b"}, {}}}));
  EXPECT_EQ(StoreAt(0), one);
  EXPECT_NE(StoreAt(1), two);
}

TEST_F(StoreLocationsTest, ADecisionCountsForAStoreThatHasNotChangedSince) {
  const StorePtr one = StoreAt(0);
  const StorePtr two = StoreAt(1);
  ASSERT_TRUE(Replace({{"new", {}, {}}, {"two", {"b"}, {}}, {"https://one/X", {"c"}, {}}}));
  locations_.Decide(two, {NetworkLocation::kLAN}, now_);
  EXPECT_EQ(Find("two"), NetworkLocation::kLAN);
  locations_.Decide(one, {NetworkLocation::kLAN}, now_);
  EXPECT_EQ(Find("https://one/X"), NetworkLocation::kDeciding) << "it has other beacons now";
  ASSERT_TRUE(Replace({{"new", {}, {}}}));
  locations_.Decide(two, {NetworkLocation::kLAN}, now_);
  EXPECT_FALSE(locations_.Find("two", now_)) << "it is no more";
}

TEST_F(StoreLocationsTest, EachChangeIsTakenOnce) {
  EXPECT_THAT(locations_.TakeChanges(), IsEmpty()) << "a store begins undecided";
  Decide(0, NetworkLocation::kLAN);
  EXPECT_THAT(locations_.TakeChanges(), ElementsAre(Pair("https://one/X", NetworkLocation::kLAN)));
  Decide(0, NetworkLocation::kLAN);
  EXPECT_THAT(locations_.TakeChanges(), IsEmpty());
  locations_.ForgetDecisions();
  EXPECT_THAT(locations_.TakeChanges(), ElementsAre(Pair("https://one/X", NetworkLocation::kDeciding)));
}

}  // namespace

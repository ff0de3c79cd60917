#include "libs/Wayfinder/StoreLocations.h"

#include <gmock/gmock.h>

using std::chrono::minutes;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using Wayfinding::LocationDecision;
using Wayfinding::NetworkLocation;
using Wayfinding::StoreLocations;

namespace {

class StoreLocationsTest : public testing::Test {
 protected:
  StoreLocationsTest() {
    EXPECT_TRUE(locations_.Replace({{"https://one/X", {"a"}, {}}, {"two", {"b"}, {}}}));
  }

  NetworkLocation Find(const std::string& url) {
    return locations_.Find(url, now_).value().decision.location;
  }
  void Decide(std::size_t store, NetworkLocation location) {
    const StoreLocations::Snapshot list = locations_.Current();
    locations_.Decide(list.number, (*list.stores)[store].url, {location, "why"}, now_);
  }

  StoreLocations locations_;
  StoreLocations::TimePoint now_{minutes(1000)};
};

TEST_F(StoreLocationsTest, AStoreIsUndecidedUntilItIsDecided) {
  EXPECT_EQ(Find("two"), NetworkLocation::Deciding);
  Decide(1, NetworkLocation::Outside);
  EXPECT_EQ(Find("two"), NetworkLocation::Outside);
  EXPECT_EQ(Find("https://one/X"), NetworkLocation::Deciding);
}

TEST_F(StoreLocationsTest, TheReasonIsOfTheDecisionAndGoesWithIt) {
  const auto reason = [this] { return locations_.Find("two", now_)->decision.reason; };
  const auto decide = [this](const LocationDecision& decision) {
    locations_.Decide(locations_.Current().number, "two", decision, now_);
  };
  EXPECT_EQ(reason(), "");
  decide({NetworkLocation::LAN, "LAN, first"});
  EXPECT_EQ(reason(), "LAN, first");
  decide({NetworkLocation::LAN, "LAN, second"});
  EXPECT_EQ(reason(), "LAN, second");
  locations_.ForgetDecisions();
  EXPECT_EQ(reason(), "");
  decide({NetworkLocation::LAN, "LAN, third"});
  EXPECT_TRUE(locations_.Replace({{"two", {"c"}, {}}}));
  EXPECT_EQ(reason(), "");
}

TEST_F(StoreLocationsTest, LetterCaseAndSlashesAtTheEndDoNotCount) {
  Decide(0, NetworkLocation::LAN);
  EXPECT_EQ(Find("HTTPS://ONE/x//"), NetworkLocation::LAN);
  EXPECT_FALSE(locations_.Find("https://one", now_));
  EXPECT_FALSE(locations_.Find("", now_));
}

TEST_F(StoreLocationsTest, AnAnswerIsOldAfterFiveMinutes) {
  Decide(0, NetworkLocation::LAN);
  EXPECT_FALSE(locations_.Find("https://one/x", now_ + minutes(5) - std::chrono::seconds(1))->isOld);
  EXPECT_TRUE(locations_.Find("https://one/x", now_ + minutes(5))->isOld);
  EXPECT_FALSE(locations_.Find("two", now_ + minutes(5))->isOld) << "it is still being decided";
}

TEST_F(StoreLocationsTest, TheSameListChangesNothing) {
  Decide(0, NetworkLocation::LAN);
  const auto number = locations_.Current().number;
  EXPECT_FALSE(locations_.Replace({{"https://one/X", {"a"}, {}}, {"two", {"b"}, {}}}));
  EXPECT_EQ(Find("https://one/X"), NetworkLocation::LAN);
  EXPECT_EQ(locations_.Current().number, number);
}

TEST_F(StoreLocationsTest, AStoreKeepsItsLocationWhenOthersComeGoAndChange) {
  Decide(1, NetworkLocation::LAN);
  EXPECT_TRUE(locations_.Replace({{"https://one/X", {"c"}, {}}, {"new", {}, {}}, {"two", {"b"}, {}}}));
  EXPECT_EQ(Find("two"), NetworkLocation::LAN);
  EXPECT_EQ(Find("https://one/X"), NetworkLocation::Deciding);
  EXPECT_TRUE(locations_.Replace({{"two", {"b"}, {}}}));
  EXPECT_EQ(Find("two"), NetworkLocation::LAN);
  EXPECT_FALSE(locations_.Find("https://one/X", now_));
  EXPECT_TRUE(locations_.Find("two", now_ + minutes(5))->isOld) << "it is as old as before";
  Decide(0, NetworkLocation::Outside);
  EXPECT_EQ(Find("two"), NetworkLocation::Outside);
}

TEST_F(StoreLocationsTest, AStoreThatChangesInAnyWayIsUndecidedAgain) {
  for (const Wayfinding::StoreBeacons& changed : std::vector<Wayfinding::StoreBeacons>{
           {"TWO", {"b"}, {}}, {"two", {"b", "b"}, {}}, {"two", {"c"}, {}}, {"two", {"b"}, {"x"}}}) {
    Decide(1, NetworkLocation::LAN);
    ASSERT_EQ(Find("two"), NetworkLocation::LAN);
    EXPECT_TRUE(locations_.Replace({{"https://one/X", {"a"}, {}}, changed}));
    EXPECT_EQ(Find("two"), NetworkLocation::Deciding);
    EXPECT_TRUE(locations_.Replace({{"https://one/X", {"a"}, {}}, {"two", {"b"}, {}}}));
  }
}

TEST_F(StoreLocationsTest, AStoreThatCameBackIsNewer) {
  const auto since = [this](std::size_t store) { return (*locations_.Current().stores)[store].since; };
  const auto first = locations_.Current().number;
  EXPECT_EQ(since(1), first);
  ASSERT_TRUE(locations_.Replace({{"https://one/X", {"a"}, {}}}));
  ASSERT_TRUE(locations_.Replace({{"https://one/X", {"a"}, {}}, {"two", {"b"}, {}}}));
  EXPECT_EQ(since(0), first);
  EXPECT_EQ(since(1), locations_.Current().number);
}

TEST_F(StoreLocationsTest, ADecisionCountsForAStoreThatHasNotChangedSince) {
  const auto number = locations_.Current().number;
  ASSERT_TRUE(locations_.Replace({{"new", {}, {}}, {"two", {"b"}, {}}, {"https://one/X", {"c"}, {}}}));
  locations_.Decide(number, "two", {NetworkLocation::LAN}, now_);
  EXPECT_EQ(Find("two"), NetworkLocation::LAN);
  locations_.Decide(number, "https://one/X", {NetworkLocation::LAN}, now_);
  EXPECT_EQ(Find("https://one/X"), NetworkLocation::Deciding) << "it has other beacons now";
  ASSERT_TRUE(locations_.Replace({{"new", {}, {}}}));
  locations_.Decide(number, "two", {NetworkLocation::LAN}, now_);
  EXPECT_FALSE(locations_.Find("two", now_)) << "it is no more";
}

TEST_F(StoreLocationsTest, EachChangeIsTakenOnce) {
  EXPECT_THAT(locations_.TakeChanges(), IsEmpty()) << "a store begins undecided";
  Decide(0, NetworkLocation::LAN);
  EXPECT_THAT(locations_.TakeChanges(), ElementsAre(Pair("https://one/X", NetworkLocation::LAN)));
  Decide(0, NetworkLocation::LAN);
  EXPECT_THAT(locations_.TakeChanges(), IsEmpty());
  locations_.ForgetDecisions();
  EXPECT_THAT(locations_.TakeChanges(), ElementsAre(Pair("https://one/X", NetworkLocation::Deciding)));
}

}  // namespace

#include "libs/Wayfinder/Deciding/RoundPlan.h"

#include <gmock/gmock.h>

using testing::ElementsAre;
using Wayfinding::PlanRound;
using Wayfinding::RoundPlan;

namespace {

std::vector<std::string> Texts(const RoundPlan& plan) {
  std::vector<std::string> texts;
  for (const auto& beacon : plan.beacons) texts.push_back(beacon.text);
  return texts;
}

TEST(RoundPlan, EveryStoreGetsItsTurnAndItsInternalBeaconsFirst) {
  const RoundPlan plan = PlanRound({{"", {"i1", "i2", "i3"}, {"e1"}}, {"", {"j1"}, {"f1", "f2"}}});
  EXPECT_THAT(Texts(plan), ElementsAre("i1", "j1", "e1", "f1", "i2", "f2", "i3"));
}

TEST(RoundPlan, ABeaconIsAskedOnceForAllStoresThatNameIt) {
  const RoundPlan plan =
      PlanRound({{"", {"https://a/x", "http://b/"}, {}}, {"", {"https://A/y"}, {"http://b"}}});
  EXPECT_THAT(Texts(plan), ElementsAre("https://a/x", "http://b"));
  EXPECT_THAT(plan.stores[0].internal, ElementsAre(0, 1));
  EXPECT_THAT(plan.stores[1].internal, ElementsAre(0));
  EXPECT_THAT(plan.stores[1].external, ElementsAre(1));
  ASSERT_EQ(plan.beacons[1].owners.size(), 2U);
  EXPECT_EQ(plan.beacons[1].owners[0].asInternal, 1U);
  EXPECT_EQ(plan.beacons[1].owners[1].asExternal, 1U);
}

TEST(RoundPlan, ABeaconThatIsSpelledAlikeHasOnePlaceInEveryList) {
  const RoundPlan plan =
      PlanRound({{"", {"http://a/", "http://b/"}, {}}, {"", {"http://b/"}, {"http://a/"}}});
  EXPECT_THAT(plan.stores[0].internal, ElementsAre(0, 1));
  EXPECT_THAT(plan.stores[1].internal, ElementsAre(1));
  EXPECT_THAT(plan.stores[1].external, ElementsAre(0));
}

TEST(RoundPlan, WhatIsNoAddressStaysInTheCount) {
  const RoundPlan plan = PlanRound({{"", {"no address", "neither is this"}, {}}});
  EXPECT_EQ(plan.stores[0].internal.size(), 2U);
  EXPECT_TRUE(plan.beacons[0].address.urls.empty());
  EXPECT_EQ(plan.beacons[0].owners[0].asInternal, 2U);
}

}  // namespace

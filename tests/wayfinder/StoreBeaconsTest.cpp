#include "libs/Wayfinder/StoreBeacons.h"

#include <gmock/gmock.h>

using PropertyList::Array;
using PropertyList::Dictionary;
using Wayfinding::ReadStoreList;
using Wayfinding::StoreBeacons;

namespace {

Dictionary Beacon(const char* location) {
  return {{"BeaconLocation", location}, {"BeaconDSConfirmed", true}};
}

TEST(StoreBeacons, TakesTheBeaconsOfEachStoreInTheirOrder) {
  const Array list = {Dictionary{{"StoreURL", "https://one.example/x"},
                                 {"StoreInternalBeacons", Array{Beacon("a"), Beacon("b")}},
                                 {"StoreExternalBeacons", Array{Beacon("c")}}}};
  EXPECT_THAT(ReadStoreList(list),
              testing::ElementsAre(StoreBeacons{"https://one.example/x", {"a", "b"}, {"c"}}));
}

TEST(StoreBeacons, AStoreWithoutInternalBeaconsIsJudgedByItsOwnURL) {
  const Array list = {Dictionary{{"StoreURL", "https://one.example/x"}}};
  EXPECT_THAT(ReadStoreList(list),
              testing::ElementsAre(StoreBeacons{"https://one.example/x", {"https://one.example/x"}, {}}));
}

TEST(StoreBeacons, WhatIsNoStoreIsLeftOut) {
  const Array list = {"text", 7, Array{}, Dictionary{{"StoreURL", 5}, {"StoreInternalBeacons", "x"}},
                      Dictionary{{"StoreURL", "u"}, {"StoreInternalBeacons", Array{1, Dictionary{}}}}};
  EXPECT_THAT(ReadStoreList(list),
              testing::ElementsAre(StoreBeacons{"", {""}, {}}, StoreBeacons{"u", {""}, {}}));
}

TEST(StoreBeacons, OfStoresWithOneURLTheLastCounts) {
  const Array list = {Dictionary{{"StoreURL", "https://One.example/"}},
                      Dictionary{{"StoreURL", "https://two"}},
                      Dictionary{{"StoreURL", "https://one.example"}}};
  EXPECT_THAT(ReadStoreList(list),
              testing::ElementsAre(testing::Field(&StoreBeacons::url, "https://one.example"),
                                   testing::Field(&StoreBeacons::url, "https://two")));
}

}  // namespace

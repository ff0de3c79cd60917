#include "libs/Wayfinder/StoreBeacons.h"

#include <gmock/gmock.h>

using PropertyList::Array;
using PropertyList::Dictionary;
using testing::_;
using testing::ElementsAre;
using testing::Pair;
using Wayfinding::ReadStoreList;
using Wayfinding::StoreBeacons;

namespace {

PropertyList::SharedDictionaries Shared(const std::vector<Dictionary>& dictionaries) {
  PropertyList::SharedDictionaries shared;
  for (const Dictionary& dictionary : dictionaries)
    shared.push_back(std::make_shared<const Dictionary>(dictionary));
  return shared;
}

Dictionary Beacon(const char* location) {
  return {{"BeaconLocation", location}, {"BeaconDSConfirmed", true}};
}

TEST(StoreBeacons, TakesTheBeaconsOfEachStoreInTheirOrder) {
  const auto list = Shared({Dictionary{{"StoreURL", "https://one.example/x"},
                                       {"StoreInternalBeacons", Array{Beacon("a"), Beacon("b")}},
                                       {"StoreExternalBeacons", Array{Beacon("c")}}}});
  EXPECT_THAT(ReadStoreList(list),
              ElementsAre(Pair(_, StoreBeacons{"https://one.example/x", {"a", "b"}, {"c"}})));
}

TEST(StoreBeacons, AStoreWithoutInternalBeaconsIsJudgedByItsOwnURL) {
  const auto list = Shared({Dictionary{{"StoreURL", "https://one.example/x"}}});
  EXPECT_THAT(ReadStoreList(list),
              ElementsAre(Pair(_, StoreBeacons{"https://one.example/x", {"https://one.example/x"}, {}})));
}

TEST(StoreBeacons, WhatIsOfAnotherKindCountsAsMissing) {
  const auto list = Shared({Dictionary{{"StoreURL", 5}, {"StoreInternalBeacons", "x"}},
                            Dictionary{{"StoreURL", "u"}, {"StoreInternalBeacons", Array{1, Dictionary{}}}}});
  EXPECT_THAT(ReadStoreList(list),
              ElementsAre(Pair("", StoreBeacons{"", {""}, {}}), Pair("u", StoreBeacons{"u", {""}, {}})));
}

TEST(StoreBeacons, OfStoresWithOneURLTheLastCounts) {
  const auto list =
      Shared({Dictionary{{"StoreURL", "https://One.example/"}}, Dictionary{{"StoreURL", "https://two"}},
              Dictionary{{"StoreURL", "https://one.example"}}});
  EXPECT_THAT(
      ReadStoreList(list),
      ElementsAre(Pair("https://one.example", testing::Field(&StoreBeacons::url, "https://one.example")),
                  Pair("https://two", testing::Field(&StoreBeacons::url, "https://two"))));
}

}  // namespace

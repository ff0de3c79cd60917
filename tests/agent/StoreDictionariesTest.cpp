#include "Bus/StoreDictionaries.h"
#include "Bus/StoreDictionary.h"
#include "libs/Bus/BusText.h"
#include "support/StoreBuilders.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

using namespace ServiceRecords;
using namespace TestSupport;
using testing::IsEmpty;

namespace {

std::shared_ptr<const StoreSnapshot> Snapshot(const StoreMap& stores, const StoreSnapshot& before = {}) {
  return std::make_shared<StoreSnapshot>(stores, before);
}

using Dictionaries = std::vector<PropertyList::Dictionary>;

Dictionaries MadeAnew(const StoreSnapshot& stores, Agent::BeaconKeys beacons = Agent::BeaconKeys::Omitted) {
  Dictionaries dictionaries;
  for (const SRStore& store : stores) dictionaries.push_back(Agent::StoreDictionary(store, beacons));
  return dictionaries;
}

Dictionaries Values(const PropertyList::SharedDictionaries& shared) {
  Dictionaries dictionaries;
  for (const auto& dictionary : shared) dictionaries.push_back(*dictionary);
  return dictionaries;
}

SRStore LongStore(const std::wstring& id, const std::wstring& name) {
  SRStore store =
      Store(id, L"https://a.long.name.of.a.server.example/" + id, {Gateway(L"GW", L"https://gw")});
  store.SetStoreName(name);
  return store;
}

TEST(StoreDictionariesTest, OfNoStoresAreNone) {
  Agent::StoreDictionaries dictionaries(Agent::BeaconKeys::Omitted);
  EXPECT_THAT(dictionaries.Of(Snapshot({})), IsEmpty());
}

TEST(StoreDictionariesTest, AreTheStoresInTheirOrderWithBeaconsWhereTheyAreIncluded) {
  SRStore store = LongStore(L"b", L"B\u00fc");
  store.AddBeacon(Beacon(L"https://in"), BeaconType::Internal);
  const auto stores = Snapshot(Map({store, LongStore(L"a", L"A")}));
  for (const Agent::BeaconKeys beacons : {Agent::BeaconKeys::Omitted, Agent::BeaconKeys::Included}) {
    Agent::StoreDictionaries dictionaries(beacons);
    EXPECT_EQ(Values(dictionaries.Of(stores)), MadeAnew(*stores, beacons));
  }
}

TEST(StoreDictionariesTest, TextHasTheirForm) {
  const auto stores = Snapshot(Map({LongStore(L"a", L"N\uFDD0me")}));
  Agent::StoreDictionaries dictionaries(Agent::BeaconKeys::Omitted, Bus::Text);
  EXPECT_EQ(*dictionaries.Of(stores)[0]->Find("StoreName"), PropertyList::Value("N\uFFFDme"));
}

TEST(StoreDictionariesTest, OfAStoreThatDidNotChangeIsKept) {
  StoreMap stores = Map({LongStore(L"a", L"A"), LongStore(L"b", L"B"), LongStore(L"c", L"C")});
  const auto before = Snapshot(stores);
  Agent::StoreDictionaries dictionaries(Agent::BeaconKeys::Omitted);
  const auto kept = dictionaries.Of(before)[2];
  stores.erase(L"a");
  stores.at(L"b").SetStoreName(L"New");
  const auto after = Snapshot(stores, *before);
  EXPECT_EQ(dictionaries.Of(after)[1], kept);
  EXPECT_EQ(Values(dictionaries.Of(after)), MadeAnew(*after));
}

TEST(StoreDictionariesTest, AreThoseOfEachListHoweverListsFollowOneAnother) {
  std::mt19937 random(1);
  std::vector<std::shared_ptr<const StoreSnapshot>> lists = {Snapshot({})};
  StoreMap stores;
  for (int i = 0; i < 60; ++i) {
    const std::wstring id(1, static_cast<wchar_t>(L'a' + random() % 12));
    if (random() % 3 == 0) {
      stores.erase(id);
    } else {
      stores.insert_or_assign(id, LongStore(id, std::to_wstring(i)));
    }
    lists.push_back(Snapshot(stores, *lists.back()));
  }
  Agent::StoreDictionaries dictionaries(Agent::BeaconKeys::Omitted);
  for (int i = 0; i < 400; ++i) {
    const auto& list = lists[random() % lists.size()];
    ASSERT_EQ(Values(dictionaries.Of(list)), MadeAnew(*list));
  }
}

}  // namespace

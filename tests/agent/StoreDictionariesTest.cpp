#include "StoreDictionaries.h"
#include "StoreDictionary.h"
#include "core/StoreBuilders.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

using namespace ServiceRecords;
using namespace testsupport;
using testing::IsEmpty;

namespace {

std::shared_ptr<const StoreSnapshot> Snapshot(const StoreMap& stores, const StoreSnapshot& before = {}) {
  return std::make_shared<StoreSnapshot>(stores, before);
}

PropertyList::Array MadeAnew(const StoreSnapshot& stores) {
  PropertyList::Array dictionaries;
  for (const SRStore& store : stores) dictionaries.push_back(StoreDictionary(store, BeaconKeys::Omitted));
  return dictionaries;
}

// Where the URL of a dictionary lies in memory.
const char* PlaceOfURL(const PropertyList::Value& dictionary) {
  return dictionary.As<PropertyList::Dictionary>()->Find("StoreURL")->As<std::string>()->data();
}

SRStore LongStore(const std::wstring& id, const std::wstring& name) {
  SRStore store =
      Store(id, L"https://a.long.name.of.a.server.example/" + id, {Gateway(L"GW", L"https://gw")});
  store.SetStoreName(name);
  return store;
}

TEST(StoreDictionariesTest, OfNoStoresAreNone) {
  StoreDictionaries dictionaries;
  EXPECT_THAT(dictionaries.Of(Snapshot({})), IsEmpty());
}

TEST(StoreDictionariesTest, AreTheStoresInTheirOrderWithoutBeacons) {
  SRStore store = LongStore(L"b", L"B\u00fc");
  store.AddBeacon(Beacon(L"https://in"), BeaconType::Internal);
  const auto stores = Snapshot(Map({store, LongStore(L"a", L"A")}));
  StoreDictionaries dictionaries;
  EXPECT_EQ(dictionaries.Of(stores), MadeAnew(*stores));
}

TEST(StoreDictionariesTest, TextIsAsTheBusCarriesIt) {
  const auto stores = Snapshot(Map({LongStore(L"a", L"N\uFDD0me")}));
  StoreDictionaries dictionaries;
  const PropertyList::Array& made = dictionaries.Of(stores);
  EXPECT_EQ(*made[0].As<PropertyList::Dictionary>()->Find("StoreName"), PropertyList::Value("N\uFFFDme"));
}

TEST(StoreDictionariesTest, OfAStoreThatDidNotChangeIsKept) {
  StoreMap stores = Map({LongStore(L"a", L"A"), LongStore(L"b", L"B"), LongStore(L"c", L"C")});
  const auto before = Snapshot(stores);
  StoreDictionaries dictionaries;
  const char* const place = PlaceOfURL(dictionaries.Of(before)[2]);
  stores.erase(L"a");
  stores.at(L"b").SetStoreName(L"New");
  const auto after = Snapshot(stores, *before);
  EXPECT_EQ(PlaceOfURL(dictionaries.Of(after)[1]), place);
  EXPECT_EQ(dictionaries.Of(after), MadeAnew(*after));
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
  StoreDictionaries dictionaries;
  for (int i = 0; i < 400; ++i) {
    const auto& list = lists[random() % lists.size()];
    ASSERT_EQ(dictionaries.Of(list), MadeAnew(*list));
  }
}

}  // namespace

#include "MacWayfinderProxy.h"
#include "libs/Wayfinder/Wayfinder.h"
#include "support/StoreBuilders.h"

#include <gmock/gmock.h>

namespace {

using PropertyList::Array;
using PropertyList::Dictionary;
using PropertyList::SharedDictionaries;
using ServiceRecords::BeaconType;
using ServiceRecords::SRStore;
using ServiceRecords::StoreMap;
using ServiceRecords::StoreSnapshot;
using testing::ElementsAre;
using TestSupport::Beacon;
using TestSupport::Gateway;
using TestSupport::Map;
using TestSupport::Store;

// What the location library gets from the one that publishes.
class PublicationTest : public testing::Test {
 protected:
  // The one list that the library got.
  SharedDictionaries HandedOver(const std::shared_ptr<const StoreSnapshot>& stores) {
    lists_.clear();
    proxy_.SetStores(stores);
    EXPECT_EQ(lists_.size(), 1U);
    return lists_.size() == 1 && lists_.front() ? *lists_.front() : SharedDictionaries();
  }
  Array Published(const StoreMap& stores) {
    Array list;
    for (const auto& dictionary : HandedOver(std::make_shared<const StoreSnapshot>(stores)))
      list.emplace_back(*dictionary);
    return list;
  }

  std::vector<std::optional<SharedDictionaries>> lists_;
  std::map<std::string, std::uint32_t> locations_;
  ServiceRecords::MacWayfinderProxy proxy_{
      {.setStores = [this](auto stores) { lists_.push_back(std::move(stores)); },
       .locationRelativeTo = [this](const auto& url) { return locations_.at(url); }}};
};

TEST_F(PublicationTest, AnEmptyMapHandsOverNothing) {
  proxy_.SetStores(std::make_shared<const StoreSnapshot>());
  EXPECT_THAT(lists_, ElementsAre(std::nullopt));
}

TEST_F(PublicationTest, AStoreWithoutListsHasFourKeys) {
  EXPECT_EQ(Published(Map({Store(L"s", L"https://s.example/Store")})),
            (Array{Dictionary{{"StoreName", "Name of s"},
                              {"StoreURL", "https://s.example/Store"},
                              {"StoreType", 0U},
                              {"StoreID", "s"}}}));
}

TEST_F(PublicationTest, BeaconsAndGatewaysFollowInTheirOrder) {
  SRStore store = Store(L"s", L"https://s.example",
                        {Gateway(L"B", L"https://b.example"), Gateway(L"A", L"https://a", true)});
  store.AddBeacon(Beacon(L"https://in2", true), BeaconType::Internal);
  store.AddBeacon(Beacon(L"https://in1"), BeaconType::Internal);
  store.AddBeacon(Beacon(L"https://out", true), BeaconType::External);

  const auto beacon = [](const char* location, bool confirmed) {
    return Dictionary{{"BeaconLocation", location}, {"BeaconDSConfirmed", confirmed}};
  };
  const auto gateway = [](const char* name, const char* url, bool isDefault) {
    return Dictionary{{"GatewayName", name}, {"GatewayURL", url}, {"IsDefault", isDefault}};
  };
  EXPECT_EQ(Published(Map({store})),
            (Array{Dictionary{
                {"StoreName", "Name of s"},
                {"StoreURL", "https://s.example"},
                {"StoreType", 0U},
                {"StoreID", "s"},
                {"StoreInternalBeacons", Array{beacon("https://in2", true), beacon("https://in1", false)}},
                {"StoreExternalBeacons", Array{beacon("https://out", true)}},
                {"StoreGateways",
                 Array{gateway("B", "https://b.example", false), gateway("A", "https://a", true)}}}}));
}

TEST_F(PublicationTest, AListThatIsEmptyIsLeftOut) {
  SRStore inside = Store(L"a", L"https://a");
  inside.AddBeacon(Beacon(L"https://in"), BeaconType::Internal);
  SRStore outside = Store(L"b", L"https://b");
  outside.AddBeacon(Beacon(L"https://out"), BeaconType::External);
  const Array list = Published(Map({inside, outside, Store(L"c", L"https://c", {Gateway(L"g")})}));
  ASSERT_EQ(list.size(), 3U);
  constexpr const char* kLists[] = {"StoreInternalBeacons", "StoreExternalBeacons", "StoreGateways"};
  for (std::size_t store = 0; store < 3; ++store) {
    const auto* dictionary = list[store].As<Dictionary>();
    ASSERT_NE(dictionary, nullptr);
    EXPECT_EQ(dictionary->Entries().size(), 5U);
    EXPECT_NE(dictionary->Find(kLists[store]), nullptr) << kLists[store];
  }
}

TEST_F(PublicationTest, StoresStandInTheOrderOfTheirIds) {
  const Array list =
      Published(Map({Store(L"b", L"https://1"), Store(L"a", L"https://2"), Store(L"B", L"https://3")}));
  std::vector<std::string> ids;
  for (const auto& store : list) ids.push_back(*store.As<Dictionary>()->Find("StoreID")->As<std::string>());
  EXPECT_THAT(ids, ElementsAre("B", "a", "b"));
}

TEST_F(PublicationTest, AStoreThatDidNotChangeIsHandedOverAsBefore) {
  StoreMap stores = Map({Store(L"a", L"https://a"), Store(L"b", L"https://b"), Store(L"c", L"https://c")});
  const auto before = std::make_shared<const StoreSnapshot>(stores);
  const SharedDictionaries first = HandedOver(before);
  ASSERT_EQ(first.size(), 3U);
  stores.erase(L"a");
  stores.at(L"b").SetStoreName(L"New");
  const SharedDictionaries second = HandedOver(std::make_shared<const StoreSnapshot>(stores, *before));
  ASSERT_EQ(second.size(), 2U);
  EXPECT_EQ(*second[0]->Find("StoreName"), PropertyList::Value("New"));
  EXPECT_EQ(second[1], first[2]) << "the same one in memory";
}

TEST_F(PublicationTest, TextIsUtf8) {
  SRStore store = Store(L"\u20AC", L"https://\u00FC", {Gateway(L"\u00E9", L"https://\u00E8")});
  store.SetStoreName(L"\U0001F3EA");
  store.AddBeacon(Beacon(L"https://\u00E0"), BeaconType::Internal);
  const Array list = Published(Map({store}));
  ASSERT_EQ(list.size(), 1U);
  EXPECT_EQ(list.front(),
            PropertyList::Value(Dictionary{
                {"StoreName", "\xF0\x9F\x8F\xAA"},
                {"StoreURL", "https://\xC3\xBC"},
                {"StoreType", 0U},
                {"StoreID", "\xE2\x82\xAC"},
                {"StoreInternalBeacons",
                 Array{Dictionary{{"BeaconLocation", "https://\xC3\xA0"}, {"BeaconDSConfirmed", false}}}},
                {"StoreGateways", Array{Dictionary{{"GatewayName", "\xC3\xA9"},
                                                   {"GatewayURL", "https://\xC3\xA8"},
                                                   {"IsDefault", false}}}}}));
}

TEST_F(PublicationTest, TheLibrarysAnswerIsGivenForTheUrlInUtf8) {
  locations_["https://\xC3\xBC"] = Wayfinder::kHotspot;
  EXPECT_EQ(proxy_.LocationRelativeTo(L"https://\u00FC"), Wayfinder::kHotspot);
}

}  // namespace

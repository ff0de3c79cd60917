#include "SRLib/Provider/StoreSearch.h"
#include "SRLib/Provider/StoreSnapshot.h"
#include "fakes/FakeConfigurator.h"
#include "support/StoreBuilders.h"

#include <gmock/gmock.h>

namespace {

using namespace ServiceRecords;
using namespace TestSupport;
using testing::ElementsAre;

// A list of three stores with all that a store can hold.
class StoreSnapshotTest : public testing::Test {
 protected:
  static SRStore Full(const std::wstring& id) {
    SRStore store = Store(id, L"https://" + id + L"/x", {Gateway(L"A", L"https://a"), Gateway(L"B")});
    store.AddBeacon(Beacon(L"in"), BeaconType::Internal);
    store.AddBeacon(Beacon(L"out", true), BeaconType::External);
    return store;
  }

  // How many stores the snapshots before and after the change have in common.
  std::size_t SharedAfter(const std::function<void(StoreMap&)>& change) const {
    StoreMap changed = stores_;
    change(changed);
    const StoreSnapshot after(changed, before_);
    std::size_t shared = 0;
    for (const SRStore& store : after) {
      const SRStore* const own = before_.ByID(store.GetStoreID());
      if (own == &store) ++shared;
      EXPECT_TRUE(store.IsSameThroughout(changed.at(store.GetStoreID())));
    }
    EXPECT_EQ(after.size(), changed.size());
    return shared;
  }

  std::size_t SharedAfterChangeOfB(const std::function<void(SRStore&)>& change) const {
    return SharedAfter([&](StoreMap& stores) { change(stores.at(L"b")); });
  }

  const FakeConfigurator configuration_;
  const StoreMap stores_ = Map({Full(L"a"), Full(L"b"), Full(L"c")});
  const StoreSnapshot before_{stores_};
};

TEST_F(StoreSnapshotTest, AnEmptyOneHoldsNothing) {
  const StoreSnapshot empty;
  EXPECT_TRUE(empty.empty());
  EXPECT_EQ(empty.size(), 0U);
  EXPECT_EQ(empty.begin(), empty.end());
  EXPECT_EQ(empty.ByID(L""), nullptr);
}

TEST_F(StoreSnapshotTest, TheStoresStandInTheOrderOfTheirIds) {
  const StoreSnapshot snapshot(
      Map({Store(L"b", L""), Store(L"a", L""), Store(L"B", L""), Store(L"\u00E9", L""), Store(L"", L"")}));
  std::vector<std::wstring> ids;
  for (const SRStore& store : snapshot) ids.push_back(store.GetStoreID());
  EXPECT_THAT(ids, ElementsAre(L"", L"B", L"a", L"b", L"\u00E9"));
}

TEST_F(StoreSnapshotTest, AStoreIsFoundByItsExactId) {
  for (const wchar_t* id : {L"a", L"b", L"c"}) {
    ASSERT_NE(before_.ByID(id), nullptr);
    EXPECT_TRUE(before_.ByID(id)->IsSameThroughout(stores_.at(id)));
  }
  for (const wchar_t* id : {L"", L"A", L"aa", L"d"}) EXPECT_EQ(before_.ByID(id), nullptr) << id;
}

TEST_F(StoreSnapshotTest, AStoreIsFoundByAUrlThatPointsAtIt) {
  EXPECT_EQ(FindStoreByURL(before_.URLs(), L"https://B/X/launch", nullptr), before_.ByID(L"b"));
  EXPECT_EQ(FindStoreByURL(before_.URLs(), L"https://unknown", nullptr), nullptr);
}

TEST_F(StoreSnapshotTest, AListThatDidNotChangeIsSharedWhole) {
  EXPECT_EQ(SharedAfter([](StoreMap&) {}), 3U);
}

TEST_F(StoreSnapshotTest, WhatComesAndGoesLeavesTheOthersShared) {
  EXPECT_EQ(SharedAfter([](StoreMap& stores) { stores.erase(L"b"); }), 2U);
  EXPECT_EQ(SharedAfter([](StoreMap& stores) { stores.erase(L"a"); }), 2U);
  EXPECT_EQ(SharedAfter([](StoreMap& stores) { stores.erase(L"c"); }), 2U);
  EXPECT_EQ(SharedAfter([](StoreMap& stores) { stores[L"aa"] = Full(L"aa"); }), 3U);
  EXPECT_EQ(SharedAfter([](StoreMap& stores) { stores[L"d"] = Full(L"d"); }), 3U);
  EXPECT_EQ(SharedAfter([](StoreMap& stores) { stores[L"A"] = Full(L"A"); }), 3U);
}

TEST_F(StoreSnapshotTest, AStoreWithAnyOtherFieldIsNotShared) {
  EXPECT_EQ(SharedAfterChangeOfB([](SRStore& store) { store.SetStoreURL(L"https://B/x"); }), 2U);
  EXPECT_EQ(SharedAfterChangeOfB([](SRStore& store) { store.SetStoreName(L"other"); }), 2U);
  EXPECT_EQ(SharedAfterChangeOfB([](SRStore& store) { store.SetSRType(SRType::unknown); }), 2U);
  EXPECT_EQ(SharedAfterChangeOfB([](SRStore& store) { store.GetInternalBeacons().clear(); }), 2U);
  EXPECT_EQ(
      SharedAfterChangeOfB([this](SRStore& store) { store.GetExternalBeacons(configuration_).clear(); }), 2U);
  EXPECT_EQ(SharedAfterChangeOfB([](SRStore& store) { store.SetAllBeaconsDSConfirmed(); }), 2U);
  EXPECT_EQ(SharedAfterChangeOfB([this](SRStore& store) {
              store.GetExternalBeacons(configuration_).front().SetDSConfirmed(false);
            }),
            2U);
}

TEST_F(StoreSnapshotTest, AStoreWithAnyOtherFieldOfAGatewayIsNotShared) {
  const auto sharedAfter = [this](const std::function<void(SRGateway&)>& change) {
    return SharedAfterChangeOfB([&](SRStore& store) { change(store.GetGateways().back()); });
  };
  EXPECT_EQ(sharedAfter([](SRGateway& gateway) { gateway.SetName(L"C"); }), 2U);
  EXPECT_EQ(sharedAfter([](SRGateway& gateway) { gateway.SetLocation(L"https://b"); }), 2U);
  EXPECT_EQ(sharedAfter([](SRGateway& gateway) { gateway.SetEdition(SRGateway::GatewayEdition::Advanced); }),
            2U);
  EXPECT_EQ(sharedAfter(
                [](SRGateway& gateway) { gateway.SetAuthentication(SRGateway::GatewayAuthentication::SMS); }),
            2U);
  EXPECT_EQ(sharedAfter([](SRGateway& gateway) { gateway.SetAGMode(SRGateway::AGMode::SG_RW); }), 2U);
  EXPECT_EQ(sharedAfter([](SRGateway& gateway) { gateway.SetTrustedByUser(true); }), 2U);
  EXPECT_EQ(sharedAfter([](SRGateway& gateway) { gateway.SetTrustedByDS(true); }), 2U);
  EXPECT_EQ(sharedAfter([](SRGateway& gateway) { gateway.SetDefault(true); }), 2U);
}

TEST_F(StoreSnapshotTest, ASharedStoreOutlivesTheSnapshotItComesFrom) {
  auto before = std::make_unique<StoreSnapshot>(stores_);
  const StoreSnapshot after(stores_, *before);
  before.reset();
  EXPECT_TRUE(after.ByID(L"a")->IsSameThroughout(stores_.at(L"a")));
}

}  // namespace

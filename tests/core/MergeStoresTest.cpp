#include "core/ProviderTest.h"

#include <stdexcept>

namespace {

using namespace ServiceRecords;
using namespace std::string_literals;
using namespace TestSupport;
using ::testing::Return;

class MergeStoresTest : public ProviderTest {
 protected:
  bool Merge(StoreMap& incoming, bool dsTrusted) {
    bool updated = true;
    provider_.MergeStores(incoming, dsTrusted, updated);
    return updated;
  }
  bool Merge(StoreMap&& incoming, bool dsTrusted) { return Merge(incoming, dsTrusted); }

  static SRStore WithEverything(const std::wstring& id) {
    SRStore store = Store(id, L"https://" + id, {Gateway(L"GW"), Gateway(L"GW2")});
    store.AddBeacon(Beacon(L"in"), BeaconType::Internal);
    store.AddBeacon(Beacon(L"out"), BeaconType::External);
    return store;
  }
};

TEST_F(MergeStoresTest, NothingIncomingChangesNothing) {
  EXPECT_FALSE(Merge({}, true));
  EXPECT_FALSE(Merge({}, false));
}

TEST_F(MergeStoresTest, ANewStoreOfADocumentIsTakenAsItIs) {
  EXPECT_TRUE(Merge(Map({WithEverything(L"a")}), false));
  const SRStore store = provider_.GetStores().at(L"a");
  for (const SRGateway& gateway : store.GetGateways()) EXPECT_FALSE(gateway.GetTrustedByDS());
  EXPECT_FALSE(store.Beacons(BeaconType::Internal).front().GetDSConfirmed());
  EXPECT_FALSE(store.Beacons(BeaconType::External).front().GetDSConfirmed());
}

TEST_F(MergeStoresTest, ANewStoreOfTheDiscoveryServiceIsConfirmedAlsoInTheCallersMap) {
  StoreMap incoming = Map({WithEverything(L"a")});
  EXPECT_TRUE(Merge(incoming, true));
  const StoreMap held = provider_.GetStores();
  for (const StoreMap& stores : {incoming, held}) {
    for (const SRGateway& gateway : stores.at(L"a").GetGateways()) EXPECT_TRUE(gateway.GetTrustedByDS());
    EXPECT_TRUE(stores.at(L"a").Beacons(BeaconType::Internal).front().GetDSConfirmed());
    EXPECT_TRUE(stores.at(L"a").Beacons(BeaconType::External).front().GetDSConfirmed());
  }
}

TEST_F(MergeStoresTest, AStoreThatTheDiscoveryServiceConfirmsIsMergedWithoutAsking) {
  SRStore held = Store(L"a", L"https://old", {Gateway(L"own")});
  held.GetGateways().front().SetTrustedByDS(true);
  Hold({held});
  EXPECT_TRUE(Merge(Map({Store(L"a", L"https://new", {Gateway(L"GW")})}), true));
  const SRStore merged = provider_.GetStores().at(L"a");
  EXPECT_EQ(merged.GetStoreURL(), L"https://new");
  EXPECT_EQ(Names(merged.GetGateways()), (Wide{L"GW"}));
}

TEST_F(MergeStoresTest, TheUserIsAskedByTheNameOfTheHeldStore) {
  SRStore held = Store(L"a", L"https://old");
  held.SetStoreName(L"held name");
  Hold({held});
  SRStore incoming = Store(L"a", L"https://new", {Gateway(L"GW")});
  incoming.SetStoreName(L"incoming name");
  EXPECT_CALL(notifications_, ShowStoreReplaceDialog(L"held name"s)).WillOnce(Return(100));
  EXPECT_TRUE(Merge(Map({incoming}), false));
  const SRStore merged = provider_.GetStores().at(L"a");
  EXPECT_EQ(merged.GetStoreName(), L"incoming name");
  EXPECT_FALSE(merged.GetGateways().front().GetTrustedByDS());
}

TEST_F(MergeStoresTest, AnyOtherAnswerThanAcceptanceLeavesTheStore) {
  for (const std::int32_t answer : {0, -1, 1, 99, 101}) {
    Hold({Store(L"a", L"https://old")});
    EXPECT_CALL(notifications_, ShowStoreReplaceDialog).WillOnce(Return(answer)).RetiresOnSaturation();
    EXPECT_FALSE(Merge(Map({Store(L"a", L"https://new")}), false));
    EXPECT_EQ(provider_.GetStores().at(L"a").GetStoreURL(), L"https://old");
    EXPECT_TRUE(provider_.RemoveStore(L"a"));
  }
}

TEST_F(MergeStoresTest, ADeclinedStoreDoesNotStopTheOthers) {
  Hold({Store(L"a", L"https://a-old"), Store(L"c", L"https://c-old")});
  ::testing::InSequence inOrder;
  EXPECT_CALL(notifications_, ShowStoreReplaceDialog(L"Name of a"s)).WillOnce(Return(0));
  EXPECT_CALL(notifications_, ShowStoreReplaceDialog(L"Name of c"s)).WillOnce(Return(100));
  EXPECT_TRUE(
      Merge(Map({Store(L"a", L"https://a"), Store(L"b", L"https://b"), Store(L"c", L"https://c")}), false));
  const StoreMap stores = provider_.GetStores();
  EXPECT_EQ(stores.at(L"a").GetStoreURL(), L"https://a-old");
  EXPECT_EQ(stores.at(L"b").GetStoreURL(), L"https://b");
  EXPECT_EQ(stores.at(L"c").GetStoreURL(), L"https://c");
}

TEST_F(MergeStoresTest, AStoreDeclinedLastDoesNotUndoTheUpdate) {
  Hold({Store(L"a", L"https://a-old"), Store(L"z", L"https://z-old")});
  ::testing::InSequence inOrder;
  EXPECT_CALL(notifications_, ShowStoreReplaceDialog(L"Name of a"s)).WillOnce(Return(100));
  EXPECT_CALL(notifications_, ShowStoreReplaceDialog(L"Name of z"s)).WillOnce(Return(0));
  EXPECT_TRUE(Merge(Map({Store(L"a", L"https://a"), Store(L"z", L"https://z")}), false));
  EXPECT_EQ(provider_.GetStores().at(L"a").GetStoreURL(), L"https://a");
  EXPECT_EQ(provider_.GetStores().at(L"z").GetStoreURL(), L"https://z-old");
}

TEST_F(MergeStoresTest, AFailureOnTheWayLeavesTheListAsItWas) {
  Hold({Store(L"a", L"https://a-old"), Store(L"z", L"https://z-old")});
  ::testing::InSequence inOrder;
  EXPECT_CALL(notifications_, ShowStoreReplaceDialog(L"Name of a"s)).WillOnce(Return(100));
  EXPECT_CALL(notifications_, ShowStoreReplaceDialog(L"Name of z"s))
      .WillOnce(::testing::Throw(std::runtime_error("no memory")));
  EXPECT_THROW(
      Merge(Map({Store(L"a", L"https://a"), Store(L"b", L"https://b"), Store(L"z", L"https://z")}), false),
      std::runtime_error);
  EXPECT_EQ(Ids(provider_.GetStores()), (Wide{L"a", L"z"}));
  EXPECT_EQ(provider_.GetStores().at(L"a").GetStoreURL(), L"https://a-old");
}

TEST_F(MergeStoresTest, IdsAreMatchedInTheirLetterCase) {
  Hold({Store(L"a", L"https://a")});
  EXPECT_TRUE(Merge(Map({Store(L"A", L"https://A")}), false));
  EXPECT_EQ(Ids(provider_.GetStores()), (Wide{L"A", L"a"}));
}

TEST_F(MergeStoresTest, MergingNeitherSavesNorPublishesNorTraces) {
  EXPECT_TRUE(Merge(Map({Store(L"a", L"https://a")}), true));
  EXPECT_FALSE(WasSaved());
  EXPECT_TRUE(publications_.All().empty());
  EXPECT_EQ(ProviderTexts(), Texts{});
}

}  // namespace

#include "SRLib/SRStore.h"
#include "core/CoreTest.h"
#include "support/StoreBuilders.h"

namespace {

using namespace ServiceRecords;
using namespace TestSupport;
using Wide = std::vector<std::wstring>;

class SRStoreTest : public CoreTest {};

TEST_F(SRStoreTest, ANewStoreIsEmptyAndOfTheStoreKind) {
  SRStore store;
  EXPECT_EQ(store.GetStoreID(), L"");
  EXPECT_EQ(store.GetStoreURL(), L"");
  EXPECT_EQ(store.GetStoreName(), L"");
  EXPECT_EQ(store.GetSRType(), SRType::store);
  EXPECT_TRUE(store.GetGateways().empty());
  EXPECT_TRUE(store.Beacons(BeaconType::Internal).empty());
  EXPECT_TRUE(store.Beacons(BeaconType::External).empty());
}

TEST_F(SRStoreTest, TheUnknownKindHasAllBitsSet) {
  EXPECT_EQ(static_cast<std::uint32_t>(SRType::store), 0U);
  EXPECT_EQ(static_cast<std::uint32_t>(SRType::unknown), 0xFFFFFFFFU);
}

TEST_F(SRStoreTest, ListsKeepTheOrderOfInsertionAndDuplicates) {
  SRStore store = Store(L"S", L"https://s");
  for (const wchar_t* name : {L"B", L"A", L"B"}) store.AddGateway(Gateway(name));
  for (const wchar_t* location : {L"2", L"1", L"2"}) store.AddBeacon(Beacon(location), BeaconType::Internal);
  EXPECT_EQ(Names(store.GetGateways()), (Wide{L"B", L"A", L"B"}));
  EXPECT_EQ(Locations(store.GetInternalBeacons()), (Wide{L"2", L"1", L"2"}));
}

TEST_F(SRStoreTest, ABeaconOfAnyOtherKindThanInternalIsExternal) {
  SRStore store = Store(L"S", L"https://s");
  store.AddBeacon(Beacon(L"in"), BeaconType::Internal);
  store.AddBeacon(Beacon(L"out"), BeaconType::External);
  store.AddBeacon(Beacon(L"other"), static_cast<BeaconType>(7));
  EXPECT_EQ(Locations(store.GetInternalBeacons()), (Wide{L"in"}));
  EXPECT_EQ(Locations(store.GetExternalBeacons(configuration_)), (Wide{L"out", L"other"}));
}

TEST_F(SRStoreTest, TheGatewayListIsChangedInPlace) {
  SRStore store = Store(L"S", L"https://s", {Gateway(L"GW")});
  store.GetGateways().front().SetLocation(L"https://moved");
  EXPECT_EQ(store.GetGateways().front().GetLocation(), L"https://moved");
}

TEST_F(SRStoreTest, TheStoresAddressStandsInForMissingInternalBeaconsOnce) {
  SRStore store = Store(L"S", L"https://s");
  EXPECT_EQ(Locations(store.GetInternalBeacons()), (Wide{L"https://s"}));
  EXPECT_EQ(Locations(store.GetInternalBeacons()), (Wide{L"https://s"}));
  EXPECT_FALSE(store.GetInternalBeacons().front().GetDSConfirmed());
  EXPECT_EQ(Locations(store.Beacons(BeaconType::Internal)), (Wide{L"https://s"}));
}

TEST_F(SRStoreTest, TheDefaultGatewaysAddressStandsInForMissingExternalBeaconsOnce) {
  SRStore store = Store(L"S", L"https://s", {Gateway(L"A", L"https://a"), Gateway(L"B", L"https://b", true)});
  EXPECT_EQ(Locations(store.GetExternalBeacons(configuration_)), (Wide{L"https://b"}));
  EXPECT_EQ(Locations(store.GetExternalBeacons(configuration_)), (Wide{L"https://b"}));
  EXPECT_FALSE(store.GetExternalBeacons(configuration_).front().GetDSConfirmed());
}

TEST_F(SRStoreTest, TheGatewayThatTheUserChoseStandsInForMissingExternalBeacons) {
  configuration_.SetString(L"SR\\UserSelectedGatewayName", L"A");
  SRStore store = Store(L"S", L"https://s", {Gateway(L"A", L"https://a"), Gateway(L"B", L"https://b", true)});
  EXPECT_EQ(Locations(store.GetExternalBeacons(configuration_)), (Wide{L"https://a"}));
}

TEST_F(SRStoreTest, ExternalBeaconsThatExistAreLeftAlone) {
  SRStore store = Store(L"S", L"https://s", {Gateway(L"A", L"https://a")});
  store.AddBeacon(Beacon(L"https://out"), BeaconType::External);
  EXPECT_EQ(Locations(store.GetExternalBeacons(configuration_)), (Wide{L"https://out"}));
}

TEST_F(SRStoreTest, AStoreWithoutGatewaysHasNoExternalBeacons) {
  SRStore store = Store(L"S", L"https://s");
  EXPECT_TRUE(store.GetExternalBeacons(configuration_).empty());
  EXPECT_TRUE(store.Beacons(BeaconType::External).empty());
}

TEST_F(SRStoreTest, LookingAtTheBeaconsAddsNone) {
  const SRStore store = Store(L"S", L"https://s", {Gateway(L"A", L"https://a")});
  EXPECT_TRUE(store.Beacons(BeaconType::Internal).empty());
  EXPECT_TRUE(store.Beacons(BeaconType::External).empty());
}

TEST_F(SRStoreTest, TrustAndConfirmationAreSetOnEverythingOfTheirKind) {
  SRStore store = Store(L"S", L"https://s", {Gateway(L"A"), Gateway(L"B")});
  for (const BeaconType type : {BeaconType::Internal, BeaconType::External}) {
    store.AddBeacon(Beacon(L"1"), type);
    store.AddBeacon(Beacon(L"2"), type);
  }
  store.SetAllGatewaysDSTrusted();
  for (const SRGateway& gateway : store.GetGateways()) {
    EXPECT_TRUE(gateway.GetTrustedByDS());
    EXPECT_FALSE(gateway.GetTrustedByUser());
  }
  store.SetAllGatewaysUserTrusted();
  for (const SRGateway& gateway : store.GetGateways()) EXPECT_TRUE(gateway.GetTrustedByUser());
  store.SetAllBeaconsDSConfirmed();
  for (const BeaconType type : {BeaconType::Internal, BeaconType::External}) {
    for (const SRBeacon& beacon : store.Beacons(type)) EXPECT_TRUE(beacon.GetDSConfirmed());
  }
}

TEST_F(SRStoreTest, TheUsersTrustIsNotTheDiscoveryServices) {
  SRStore store = Store(L"S", L"https://s", {Gateway(L"A")});
  store.SetAllGatewaysUserTrusted();
  EXPECT_TRUE(store.GetGateways().front().GetTrustedByUser());
  EXPECT_FALSE(store.GetGateways().front().GetTrustedByDS());
}

TEST_F(SRStoreTest, ConfirmingTheBeaconsAddsNone) {
  SRStore store = Store(L"S", L"https://s", {Gateway(L"A", L"https://a")});
  store.SetAllBeaconsDSConfirmed();
  EXPECT_TRUE(store.Beacons(BeaconType::Internal).empty());
  EXPECT_TRUE(store.Beacons(BeaconType::External).empty());
}

}  // namespace

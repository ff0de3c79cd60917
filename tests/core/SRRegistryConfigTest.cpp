#include "SRLib/SRRegistryConfig.h"
#include "core/CoreTest.h"
#include "support/StoreBuilders.h"

namespace {

using namespace ServiceRecords;
using namespace TestSupport;
using Wide = std::vector<std::wstring>;

class SRRegistryConfigTest : public CoreTest {
 protected:
  static SRGateway FullGateway() {
    SRGateway gateway = Gateway(L"GW", L"https://gw", true);
    gateway.SetEdition(SRGateway::GatewayEdition::Enterprise);
    gateway.SetAuthentication(SRGateway::GatewayAuthentication::GatewayKnows);
    gateway.SetAGMode(SRGateway::AGMode::ENTCVPN_RW);
    gateway.SetTrustedByUser(true);
    gateway.SetTrustedByDS(true);
    return gateway;
  }

  // What a save of these stores leaves in the file.
  Wide Saved(const StoreMap& stores) {
    Repository().SaveStores(stores);
    return configuration_.Dump();
  }
};

TEST_F(SRRegistryConfigTest, AKeyIsParentBackslashChild) {
  EXPECT_EQ(SRRegistryConfig::NodeLiteral(L"SR\\Store", L"id"), L"SR\\Store\\id");
}

TEST_F(SRRegistryConfigTest, AStoreIsSavedInTheFilesLayout) {
  SRStore store = Store(L"id", L"https://s", {FullGateway(), Gateway(L"Second")});
  store.AddBeacon(Beacon(L"https://in1", true), BeaconType::Internal);
  store.AddBeacon(Beacon(L"https://in2"), BeaconType::Internal);
  store.AddBeacon(Beacon(L"https://out", true), BeaconType::External);
  EXPECT_EQ(Saved(Map({store})), (Wide{L"SR\\",
                                       L"SR\\Store\\",
                                       L"SR\\Store\\id\\",
                                       L"SR\\Store\\id\\Name = \"Name of id\"",
                                       L"SR\\Store\\id\\Addr = \"https://s\"",
                                       L"SR\\Store\\id\\SRType = 0",
                                       L"SR\\Store\\id\\Gateways\\",
                                       L"SR\\Store\\id\\Gateways\\GW\\",
                                       L"SR\\Store\\id\\Gateways\\GW\\LogonPoint = \"https://gw\"",
                                       L"SR\\Store\\id\\Gateways\\GW\\Edition = 2",
                                       L"SR\\Store\\id\\Gateways\\GW\\Auth = 5",
                                       L"SR\\Store\\id\\Gateways\\GW\\AGMode = 3",
                                       L"SR\\Store\\id\\Gateways\\GW\\TrustedByUser = true",
                                       L"SR\\Store\\id\\Gateways\\GW\\TrustedByDS = true",
                                       L"SR\\Store\\id\\Gateways\\GW\\IsDefault = true",
                                       L"SR\\Store\\id\\Gateways\\Second\\",
                                       L"SR\\Store\\id\\Gateways\\Second\\LogonPoint = \"\"",
                                       L"SR\\Store\\id\\Gateways\\Second\\Edition = 0",
                                       L"SR\\Store\\id\\Gateways\\Second\\Auth = 1",
                                       L"SR\\Store\\id\\Gateways\\Second\\AGMode = 0",
                                       L"SR\\Store\\id\\Gateways\\Second\\TrustedByUser = false",
                                       L"SR\\Store\\id\\Gateways\\Second\\TrustedByDS = false",
                                       L"SR\\Store\\id\\Gateways\\Second\\IsDefault = false",
                                       L"SR\\Store\\id\\Beacons\\",
                                       L"SR\\Store\\id\\Beacons\\Internal\\",
                                       L"SR\\Store\\id\\Beacons\\Internal\\Addr0\\",
                                       L"SR\\Store\\id\\Beacons\\Internal\\Addr0\\Address = \"https://in1\"",
                                       L"SR\\Store\\id\\Beacons\\Internal\\Addr0\\DSconfirmed = true",
                                       L"SR\\Store\\id\\Beacons\\Internal\\Addr1\\",
                                       L"SR\\Store\\id\\Beacons\\Internal\\Addr1\\Address = \"https://in2\"",
                                       L"SR\\Store\\id\\Beacons\\Internal\\Addr1\\DSconfirmed = false",
                                       L"SR\\Store\\id\\Beacons\\External\\",
                                       L"SR\\Store\\id\\Beacons\\External\\Addr0\\",
                                       L"SR\\Store\\id\\Beacons\\External\\Addr0\\Address = \"https://out\"",
                                       L"SR\\Store\\id\\Beacons\\External\\Addr0\\DSconfirmed = true"}));
}

TEST_F(SRRegistryConfigTest, BeaconsAreNumberedInDecimalWithoutLeadingZeros) {
  SRStore store = Store(L"id", L"https://s");
  for (int i = 0; i < 11; ++i) store.AddBeacon(Beacon(std::to_wstring(i)), BeaconType::External);
  Repository().SaveStores(Map({store}));
  std::wstring address;
  EXPECT_TRUE(configuration_.GetString(L"SR\\Store\\id\\Beacons\\External\\Addr10\\Address", L"", address));
  EXPECT_EQ(address, L"10");
}

TEST_F(SRRegistryConfigTest, EverythingComesBackAsItWasSaved) {
  SRStore store = Store(L"id", L"https://s", {FullGateway(), Gateway(L"A"), Gateway(L"B")});
  store.AddBeacon(Beacon(L"https://in", true), BeaconType::Internal);
  store.AddBeacon(Beacon(L"https://out"), BeaconType::External);
  Repository().SaveStores(Map({Store(L"z", L"https://z"), store}));
  const StoreMap restored = Repository().RestoreStores();
  ASSERT_EQ(Ids(restored), (Wide{L"id", L"z"}));
  const SRStore& back = restored.at(L"id");
  EXPECT_EQ(back.GetStoreID(), L"id");
  EXPECT_EQ(back.GetStoreName(), L"Name of id");
  EXPECT_EQ(back.GetStoreURL(), L"https://s");
  EXPECT_EQ(Names(back.GetGateways()), (Wide{L"GW", L"A", L"B"}));
  const SRGateway& gateway = back.GetGateways().front();
  EXPECT_EQ(gateway.GetLocation(), L"https://gw");
  EXPECT_EQ(gateway.GetEdition(), SRGateway::GatewayEdition::Enterprise);
  EXPECT_EQ(gateway.GetAuthentication(), SRGateway::GatewayAuthentication::GatewayKnows);
  EXPECT_EQ(gateway.GetAGMode(), SRGateway::AGMode::ENTCVPN_RW);
  EXPECT_TRUE(gateway.GetTrustedByUser() && gateway.GetTrustedByDS() && gateway.GetDefault());
  EXPECT_EQ(Locations(back.Beacons(BeaconType::Internal)), (Wide{L"https://in"}));
  EXPECT_TRUE(back.Beacons(BeaconType::Internal).front().GetDSConfirmed());
  EXPECT_EQ(Locations(back.Beacons(BeaconType::External)), (Wide{L"https://out"}));
  EXPECT_FALSE(back.Beacons(BeaconType::External).front().GetDSConfirmed());
}

TEST_F(SRRegistryConfigTest, SavingNothingRemovesEveryStoreAndTheContainerOfStores) {
  Repository().SaveStores(Map({Store(L"id", L"https://s")}));
  configuration_.SetString(L"SR\\UserSelectedGatewayName", L"GW");
  EXPECT_EQ(Saved({}), (Wide{L"SR\\", L"SR\\UserSelectedGatewayName = \"GW\""}));
  EXPECT_TRUE(Repository().RestoreStores().empty());
}

TEST_F(SRRegistryConfigTest, ASaveReplacesTheSavedSet) {
  Repository().SaveStores(Map({Store(L"a", L"https://a"), Store(L"b", L"https://b")}));
  Repository().SaveStores(Map({Store(L"c", L"https://c")}));
  EXPECT_EQ(Ids(Repository().RestoreStores()), (Wide{L"c"}));
}

TEST_F(SRRegistryConfigTest, StoresAreSavedInTheOrderOfTheirIds) {
  Repository().SaveStores(Map({Store(L"b", L""), Store(L"a", L""), Store(L"B", L"")}));
  std::wstring name;
  Wide order;
  for (std::uint32_t i = 0; configuration_.EnumContainers(L"SR\\Store", i, name); ++i) order.push_back(name);
  EXPECT_EQ(order, (Wide{L"B", L"a", L"b"}));
}

TEST_F(SRRegistryConfigTest, BeaconsThatStandInForMissingListsAreSavedAndInTheListToo) {
  StoreMap stores = Map({Store(L"id", L"https://s", {Gateway(L"GW", L"https://gw")})});
  Repository().SaveStores(stores);
  for (const StoreMap& each : {stores, Repository().RestoreStores()}) {
    EXPECT_EQ(Locations(each.at(L"id").Beacons(BeaconType::Internal)), (Wide{L"https://s"}));
    EXPECT_EQ(Locations(each.at(L"id").Beacons(BeaconType::External)), (Wide{L"https://gw"}));
  }
}

TEST_F(SRRegistryConfigTest, AListThatMustNotChangeIsSavedTheSameWay) {
  const StoreMap stores = Map({Store(L"id", L"https://s", {Gateway(L"GW", L"https://gw")})});
  Repository().SaveStores(stores);
  EXPECT_TRUE(stores.at(L"id").Beacons(BeaconType::Internal).empty());
  const Wide saved = configuration_.Dump();
  StoreMap changing = stores;
  Repository().SaveStores(changing);
  EXPECT_EQ(configuration_.Dump(), saved);
}

TEST_F(SRRegistryConfigTest, GatewaysAndBeaconsComeBackInTheirOrder) {
  SRStore store = Store(L"id", L"https://s", {Gateway(L"C"), Gateway(L"A"), Gateway(L"B")});
  for (const wchar_t* location : {L"3", L"1", L"2"}) {
    store.AddBeacon(Beacon(location), BeaconType::Internal);
    store.AddBeacon(Beacon(std::wstring(L"out ") + location), BeaconType::External);
  }
  Repository().SaveStores(Map({store}));
  const SRStore back = Repository().RestoreStores().at(L"id");
  EXPECT_EQ(Names(back.GetGateways()), (Wide{L"C", L"A", L"B"}));
  EXPECT_EQ(Locations(back.Beacons(BeaconType::Internal)), (Wide{L"3", L"1", L"2"}));
  EXPECT_EQ(Locations(back.Beacons(BeaconType::External)), (Wide{L"out 3", L"out 1", L"out 2"}));
}

TEST_F(SRRegistryConfigTest, SavingOneStoreAddsTheBeaconsThatStandIn) {
  SRStore store = Store(L"id", L"https://s");
  Repository().SaveStore(store);
  EXPECT_EQ(Locations(store.Beacons(BeaconType::Internal)), (Wide{L"https://s"}));
  std::wstring address;
  EXPECT_TRUE(configuration_.GetString(L"SR\\Store\\id\\Beacons\\Internal\\Addr0\\Address", L"", address));
  EXPECT_EQ(address, L"https://s");
}

TEST_F(SRRegistryConfigTest, AnUnknownKindIsSavedAsItsNumberAndComesBack) {
  SRStore store = Store(L"id", L"https://s");
  store.SetSRType(SRType::unknown);
  Repository().SaveStores(Map({store}));
  std::uint32_t number = 0;
  EXPECT_TRUE(configuration_.GetUInt(L"SR\\Store\\id\\SRType", 0, number));
  EXPECT_EQ(number, 4294967295U);
  EXPECT_EQ(Repository().RestoreStores().at(L"id").GetSRType(), SRType::unknown);
}

TEST_F(SRRegistryConfigTest, GatewaysOfOneNameShareAContainerAndTheLaterOneWins) {
  Repository().SaveStores(
      Map({Store(L"id", L"", {Gateway(L"GW", L"https://1"), Gateway(L"GW", L"https://2")})}));
  const StoreMap restored = Repository().RestoreStores();
  ASSERT_EQ(Names(restored.at(L"id").GetGateways()), (Wide{L"GW"}));
  EXPECT_EQ(restored.at(L"id").GetGateways().front().GetLocation(), L"https://2");
}

TEST_F(SRRegistryConfigTest, MissingValuesComeBackAsTheirDefaultsAndTheWayToLogOnAsTheFirstKind) {
  configuration_.CreateContainer(L"SR\\Store\\id\\Gateways\\GW");
  configuration_.CreateContainer(L"SR\\Store\\id\\Beacons\\Internal\\any name");
  const StoreMap restored = Repository().RestoreStores();
  const SRStore& store = restored.at(L"id");
  EXPECT_EQ(store.GetStoreName(), L"");
  EXPECT_EQ(store.GetStoreURL(), L"");
  EXPECT_EQ(store.GetSRType(), SRType::store);
  ASSERT_EQ(Names(store.GetGateways()), (Wide{L"GW"}));
  const SRGateway& gateway = store.GetGateways().front();
  EXPECT_EQ(gateway.GetAuthentication(), SRGateway::GatewayAuthentication::RSA);
  EXPECT_EQ(gateway.GetEdition(), SRGateway::GatewayEdition::Standard);
  EXPECT_EQ(gateway.GetAGMode(), SRGateway::AGMode::NONE);
  EXPECT_EQ(gateway.GetLocation(), L"");
  EXPECT_FALSE(gateway.GetTrustedByUser() || gateway.GetTrustedByDS() || gateway.GetDefault());
  EXPECT_EQ(Locations(store.Beacons(BeaconType::Internal)), (Wide{L""}));
  EXPECT_FALSE(store.Beacons(BeaconType::Internal).front().GetDSConfirmed());
}

TEST_F(SRRegistryConfigTest, AStoreWithoutListsComesBackWithEmptyOnes) {
  configuration_.CreateContainer(L"SR\\Store\\id");
  const StoreMap restored = Repository().RestoreStores();
  EXPECT_TRUE(restored.at(L"id").GetGateways().empty());
  EXPECT_TRUE(restored.at(L"id").Beacons(BeaconType::Internal).empty());
  EXPECT_TRUE(restored.at(L"id").Beacons(BeaconType::External).empty());
}

TEST_F(SRRegistryConfigTest, ANameWithABackslashSplitsAndIsNotRestoredAsOneGateway) {
  Repository().SaveStores(Map({Store(L"id", L"", {Gateway(L"A\\B", L"https://gw")})}));
  const StoreMap restored = Repository().RestoreStores();
  ASSERT_EQ(Names(restored.at(L"id").GetGateways()), (Wide{L"A"}));
  EXPECT_EQ(restored.at(L"id").GetGateways().front().GetLocation(), L"");
}

TEST_F(SRRegistryConfigTest, OneGatewayListOrBeaconListCanBeRestoredByItself) {
  configuration_.SetString(L"Any\\Gateways\\GW\\LogonPoint", L"https://gw");
  configuration_.SetString(L"Any\\Beacons\\External\\x\\Address", L"https://out");
  SRStore store;
  Repository().RestoreGateways(L"Any", store);
  Repository().RestoreBeacons(L"Any", BeaconType::External, store);
  EXPECT_EQ(Names(store.GetGateways()), (Wide{L"GW"}));
  EXPECT_EQ(Locations(store.Beacons(BeaconType::External)), (Wide{L"https://out"}));
}

}  // namespace

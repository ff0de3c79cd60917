#include "agent/InterfaceDescription.h"
#include "support/AgentTest.h"
#include "support/TestFiles.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

using nlohmann::json;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using TestSupport::AgentTest;

class ServiceCalls : public AgentTest {
 protected:
  ServiceCalls() {
    agent_.EnableLog();
    agent_.Start();
  }

  void Discover(const std::vector<TestSupport::StoreText>& stores) {
    agent_.Bus().ServiceRecords("handleDiscoveryDocument", {TestSupport::DiscoveryDocument(stores)});
  }
  // Without those that the location library writes from its own thread.
  [[nodiscard]] std::vector<std::string> RecordsOfCalls() const {
    std::vector<std::string> records = agent_.LogMessages();
    std::erase_if(records, [](const std::string& message) {
      return message.starts_with("store ") || message.starts_with("network");
    });
    return records;
  }
  json Call(const std::string& method, const std::vector<std::string>& arguments = {}) {
    return agent_.Bus().ServiceRecords(method, arguments);
  }
};

TEST_F(ServiceCalls, WithoutStoresNothingIsAnEmptyResult) {
  EXPECT_EQ(Call("allStores"), json::array());
  EXPECT_EQ(Call("storeForID", {"s1"}), json::object());
}

TEST_F(ServiceCalls, AStoreWithoutGatewaysHasFourKeys) {
  auto store = Store("s1", "One");
  store.gateways.clear();
  Discover({store});
  EXPECT_EQ(Call("storeForID", {"s1"}),
            (json{{"StoreName", "One"}, {"StoreURL", store.url}, {"StoreType", 0}, {"StoreID", "s1"}}));
}

TEST_F(ServiceCalls, StoresComeInTheOrderOfTheirIds) {
  Discover({Store("b", "B"), Store("a", "A"), Store("Z", "Z")});
  EXPECT_THAT(StoreIDs(), ElementsAre("Z", "a", "b"));
}

TEST_F(ServiceCalls, AnIdIsLookedUpCaseSensitively) {
  Discover({Store("s1", "One")});
  EXPECT_EQ(Call("storeForID", {"S1"}), json::object());
}

TEST_F(ServiceCalls, LookingUpAStoreIsRecordedWithWhatItAsks) {
  const auto store = Store("s1", "One");
  Discover({store});
  const std::size_t before = RecordsOfCalls().size();
  Call("storeForID", {"s1"});
  agent_.Bus().Beacons("getCurrentGatewayForStore", {store.url});
  const std::vector<std::string> records = RecordsOfCalls();
  EXPECT_THAT(std::vector(records.begin() + static_cast<std::ptrdiff_t>(before), records.end()),
              ElementsAre("[+] MrvServiceRecordsSvr::storeForID (s1)", "[+] MrvServiceRecordsSvr::allStores",
                          "[-] MrvServiceRecordsSvr::allStores", "[-] MrvServiceRecordsSvr::storeForID",
                          "[+] MrvBeaconSvr::getCurrentGatewayForStore (" + store.url + ")",
                          "SRProvider::GetStoreFromURL found matching store: " + store.url +
                              ", for URL: " + store.url,
                          "Gateway selected by user doesn't match any from the store. Using default from "
                          "store: " +
                              store.gateways[1].location,
                          "[-] MrvBeaconSvr::getCurrentGatewayForStore"));
}

TEST_F(ServiceCalls, TheDefaultGatewayIsChangedByUrlAndByIdAndSaved) {
  const auto store = Store("s1", "One");
  Discover({store});
  EXPECT_EQ(Call("setDefaultGatewayForStoreURLTo", {store.url, "Branch"}), true);
  EXPECT_EQ(agent_.Bus().Beacons("getCurrentGatewayForStore", {store.url})["GatewayName"], "Branch");
  EXPECT_EQ(Call("setDefaultGatewayForStoreIDTo", {"s1", "Head Office"}), true);
  EXPECT_EQ(Call("setDefaultGatewayForStoreIDTo", {"s1", "Branch"}), true);
  agent_.Terminate();
  agent_.Start();
  EXPECT_EQ(Call("storeForID", {"s1"})["StoreGateways"][0]["IsDefault"], true);
  EXPECT_EQ(Call("storeForID", {"s1"})["StoreGateways"][1]["IsDefault"], false);
}

TEST_F(ServiceCalls, ADefaultGatewayThatCannotBeSetIsRefused) {
  const auto store = Store("s1", "One");
  Discover({store});
  EXPECT_EQ(Call("setDefaultGatewayForStoreIDTo", {"s1", "Nowhere"}), false);
  EXPECT_EQ(Call("setDefaultGatewayForStoreIDTo", {"s2", "Branch"}), false);
  EXPECT_EQ(Call("setDefaultGatewayForStoreIDTo", {"s1", ""}), false);
  EXPECT_EQ(Call("setDefaultGatewayForStoreIDTo", {"", "Branch"}), false);
  EXPECT_EQ(Call("setDefaultGatewayForStoreURLTo", {store.url + "/", "Branch"}), false);
  EXPECT_THAT(agent_.LogMessages(),
              testing::IsSupersetOf({"[+] MrvServiceRecordsSvr::setDefaultGatewayForStoreIDTo (s1, )",
                                     "[-] MrvServiceRecordsSvr::setDefaultGatewayForStoreIDTo (0)"}));
}

TEST_F(ServiceCalls, AnEmptyGatewayNameIsRefusedEvenWhenAGatewayHasIt) {
  auto store = Store("s1", "One");
  store.gateways = {{.name = "", .location = "https://localhost/1"},
                    {.name = "GW", .location = "https://localhost/2", .isDefault = true}};
  Discover({store});
  EXPECT_EQ(Call("setDefaultGatewayForStoreIDTo", {"s1", ""}), false);
  EXPECT_EQ(Call("setDefaultGatewayForStoreURLTo", {store.url, ""}), false);
  EXPECT_EQ(agent_.Bus().Beacons("getCurrentGatewayForStore", {store.url})["GatewayName"], "GW");
}

TEST_F(ServiceCalls, AnEmptyStoreIsRefusedEvenWhenTheFileHasOne) {
  using PropertyList::Dictionary;
  agent_.Terminate();
  const Dictionary store{{"Gateways", Dictionary{{"GW", Dictionary{{"LogonPoint", "https://localhost/1"}}}}}};
  std::ofstream(agent_.StoresFile()) << PropertyList::Write(
      Dictionary{{"SR", Dictionary{{"Store", Dictionary{{"", store}}}}}});
  agent_.Start();
  ASSERT_THAT(StoreIDs(), ElementsAre(""));
  EXPECT_EQ(Call("setDefaultGatewayForStoreIDTo", {"", "GW"}), false);
  EXPECT_EQ(Call("setDefaultGatewayForStoreURLTo", {"", "GW"}), false);
  EXPECT_EQ(Call("allStores")[0]["StoreGateways"][0]["IsDefault"], false);
}

TEST_F(ServiceCalls, TheMachinesFileNeitherChoosesAGatewayNorIsWritten) {
  using PropertyList::Dictionary;
  const auto choice = [](const char* gateway) {
    return PropertyList::Write(Dictionary{{"SR", Dictionary{{"UserSelectedGatewayName", gateway}}}});
  };
  agent_.Terminate();
  const std::filesystem::path machine = agent_.Write("etc/Morvane/ServiceRecords.plist", choice("Branch"));
  const auto lastWritten = std::filesystem::last_write_time(machine);
  for (const auto& [ofUser, gateway] : {std::pair("", "Head Office"), {"Branch", "Branch"}}) {
    SCOPED_TRACE(ofUser);
    std::filesystem::create_directories(agent_.StoresFile().parent_path());
    std::ofstream(agent_.StoresFile()) << choice(ofUser);
    agent_.Start();
    Discover({Store("s1", "One")});
    EXPECT_EQ(agent_.Bus().Beacons("getCurrentGatewayForStore", {Store("s1", "").url})["GatewayName"],
              gateway);
    EXPECT_EQ(Call("deleteStore", {"s1"}), true);
    EXPECT_EQ(agent_.Terminate(), 0);
    EXPECT_EQ(TestSupport::ReadFile(machine), choice("Branch"));
    EXPECT_EQ(std::filesystem::last_write_time(machine), lastWritten);
  }
}

TEST_F(ServiceCalls, ADeletedStoreIsGoneFromTheListAndTheFile) {
  Discover({Store("s1", "One"), Store("s2", "Two")});
  EXPECT_EQ(Call("deleteStore", {"s1"}), true);
  EXPECT_EQ(Call("deleteStore", {"s1"}), false);
  EXPECT_EQ(Call("deleteStore", {""}), false);
  agent_.Terminate();
  agent_.Start();
  EXPECT_THAT(StoreIDs(), ElementsAre("s2"));
}

TEST_F(ServiceCalls, TheUIBundlePathIsTheOneThatDialogsAreLoadedFrom) {
  EXPECT_EQ(Call("uiBundlePath"), (agent_.BundleFolder() / "PlugIns/ServiceRecordUI.bundle").string());
}

TEST_F(ServiceCalls, ADiscoveryDocumentIsMergedWithoutADialogAndAnnounced) {
  Discover({Store("s1", "One")});
  EXPECT_THAT(StoreIDs(), ElementsAre("s1"));
  EXPECT_THAT(agent_.Dialogs(), IsEmpty());
  EXPECT_TRUE(agent_.Bus().WaitUntil([&] { return CountNotifications() == 1; }));
}

TEST_F(ServiceCalls, TheSameDiscoveryDocumentIsAppliedTwiceAndAnnouncedOnce) {
  Discover({Store("s1", "One")});
  Call("deleteStore", {"s1"});
  Discover({Store("s1", "One")});
  EXPECT_THAT(StoreIDs(), ElementsAre("s1")) << "applied again";
  EXPECT_EQ(CountNotifications(), 1U);
}

TEST_F(ServiceCalls, AnotherDiscoveryDocumentIsAnnouncedToo) {
  Discover({Store("s1", "One")});
  Discover({Store("s1", "Two")});
  EXPECT_TRUE(agent_.Bus().WaitUntil([&] { return CountNotifications() == 2; }));
}

TEST_F(ServiceCalls, ADiscoveryDocumentThatFailedIsAnnouncedWhenItIsTakenLater) {
  agent_.Terminate();
  std::filesystem::create_directories(agent_.StoresFile());  // a file that cannot be read
  agent_.Start();
  const auto store = Store("s1", "One");
  Discover({store});
  EXPECT_THAT(StoreIDs(), IsEmpty());
  EXPECT_EQ(CountNotifications(), 0U);
  std::filesystem::remove(agent_.StoresFile());
  ASSERT_TRUE(agent_.Bus().WaitUntil([&] { return CountNotifications() == 1; })) << "the list is known now";
  Discover({store});
  EXPECT_THAT(StoreIDs(), ElementsAre("s1"));
  EXPECT_TRUE(agent_.Bus().WaitUntil([&] { return CountNotifications() == 2; }));
}

TEST_F(ServiceCalls, ADiscoveryDocumentWithoutStoresShowsAnErrorAndIsNotAnnounced) {
  Discover({});
  ASSERT_TRUE(agent_.Bus().WaitUntil([&] { return agent_.Dialogs().size() == 1; }));
  EXPECT_EQ(agent_.Dialogs()[0].first, "errorMessage");
  EXPECT_THAT(StoreIDs(), IsEmpty());
  EXPECT_EQ(CountNotifications(), 0U);
}

TEST_F(ServiceCalls, CharactersThatTheBusRefusesAreReplacedInNamesAndAddresses) {
  auto store = Store("s1", "N&#xFDD0;a&#xFDEF;me");
  const std::string url = store.url;
  store.url += "/&#xFDD0;";
  store.gateways[1].location += "/&#xFDD0;";
  Discover({store});
  const json answer = Call("storeForID", {"s1"});
  EXPECT_EQ(answer["StoreName"], "N\uFFFDa\uFFFDme");
  EXPECT_EQ(answer["StoreURL"], url + "/\uFFFD");
  const std::string location = Store("s1", "").gateways[1].location + "/\uFFFD";
  EXPECT_EQ(answer["StoreGateways"][1]["GatewayURL"], location);
  EXPECT_EQ(agent_.Bus().Beacons("getCurrentGatewayForStore", {url + "/x"})["GatewayURL"], location);
}

TEST_F(ServiceCalls, ANotificationIsPostedAlsoWhereTheBusRefusesACharacterOfItsObject) {
  auto store = Store("s1", "One");
  const std::string object = store.url + "/\uFFFD";
  store.url += "/&#xFDD0;";
  Discover({store});
  EXPECT_TRUE(agent_.Bus().WaitUntil([&] {
    const std::vector<std::string> seen = agent_.Bus().Notifications();
    return std::find(seen.begin(), seen.end(), "MRVNetworkLocationChanged " + object) != seen.end();
  }));
}

TEST_F(ServiceCalls, AnIdThatCouldReachItsNeighbourIsNotTaken) {
  Discover({Store("trusted", "One")});
  Discover({Store("trusted\\Addr", "Evil")});
  const std::string document = TestSupport::DiscoveryDocument({Store("trusted&#1;", "Evil")});
  agent_.Bus().ServiceRecords("handleDiscoveryDocument",
                              {"<?xml version=\"1.1\"" + document.substr(document.find(" encoding="))});
  EXPECT_THAT(StoreIDs(), ElementsAre("trusted"));
  agent_.Terminate();
  agent_.Start();
  EXPECT_THAT(StoreIDs(), ElementsAre("trusted"));
  EXPECT_EQ(Call("storeForID", {"trusted"})["StoreURL"], Store("trusted", "").url);
}

TEST_F(ServiceCalls, AURLOfMoreThan64KibibytesPointsAtNoStore) {
  const auto store = Store("s1", "One");
  Discover({store});
  const std::string longest = store.url + "/" + std::string((64 << 10) - store.url.size() - 1, 'x');
  EXPECT_EQ(agent_.Bus().Beacons("getCurrentGatewayForStore", {longest})["GatewayName"], "Head Office");
  const std::size_t before = RecordsOfCalls().size();
  EXPECT_EQ(agent_.Bus().Beacons("getCurrentGatewayForStore", {longest + "x"}), json::object());
  const std::vector<std::string> records = RecordsOfCalls();
  ASSERT_EQ(records.size(), before + 1);
  EXPECT_EQ(records.back(),
            "[*] MrvBeaconSvr::getCurrentGatewayForStore Called with a URL of more than 65536 bytes");
}

TEST_F(ServiceCalls, AStoreIsFoundInAnyLetterCaseOfItsURL) {
  auto store = Store("s1", "One");
  store.url = "https://localhost/\u00c4PFEL/store";
  store.gateways = {{.name = "Apples", .location = "https://localhost/apples"}};
  Discover({Store("s0", "Zero"), store});
  EXPECT_EQ(agent_.Bus().Beacons("getCurrentGatewayForStore",
                                 {"HTTPS://localhost/\u00e4pfel/Store"})["GatewayName"],
            "Apples");
}

TEST_F(ServiceCalls, TheCurrentGatewayIsTheStoresDefaultGateway) {
  const auto store = Store("s1", "One");
  Discover({store});
  EXPECT_EQ(agent_.Bus().Beacons("getCurrentGatewayForStore", {store.url}),
            (json{{"GatewayURL", store.gateways[1].location},
                  {"GatewayName", "Head Office"},
                  {"GatewayAuthType", 2},
                  {"GatewayEdition", 2}}));
}

TEST_F(ServiceCalls, AnUnknownStoreHasNoCurrentGateway) {
  EXPECT_EQ(agent_.Bus().Beacons("getCurrentGatewayForStore", {"https://unknown.example/x"}), json::object());
  EXPECT_EQ(agent_.Bus().Beacons("getCurrentGatewayForStore", {""}), json::object());
  EXPECT_THAT(
      agent_.LogMessages(),
      testing::Contains("[*] MrvBeaconSvr::getCurrentGatewayForStore Called with invalid params (null)"));
}

TEST_F(ServiceCalls, AStoreWithoutADefaultMarkAnswersWithItsFirstGateway) {
  auto store = Store("s1", "One");
  store.gateways[1].isDefault = false;
  Discover({store});
  EXPECT_EQ(agent_.Bus().Beacons("getCurrentGatewayForStore", {store.url})["GatewayName"], "Branch");
}

TEST_F(ServiceCalls, AnUnknownStoreIsOutsideWhereThereIsANetworkAndElsewhereNowhere) {
  const bool hasNetwork = (agent_.Bus().Beacons("networkReachabilityFlags").get<std::uint32_t>() & 2U) != 0;
  const std::string name = hasNetwork ? "NETWORK_LOCATION_OUTSIDE" : "NETWORK_LOCATION_NONE";
  EXPECT_EQ(agent_.Bus().Beacons("checkLocationForStore", {"https://localhost/x"}), hasNetwork ? 2 : 3);
  EXPECT_THAT(
      agent_.LogMessages(),
      testing::IsSupersetOf({std::string("[+] MrvBeaconSvr::checkLocationForStore (https://localhost/x)"),
                             "[-] MrvBeaconSvr::checkLocationForStore (" + name + ")"}));
}

TEST_F(ServiceCalls, TheLocationOfAStoreIsDecidedByItsBeacons) {
  const auto store = Store("s1", "One");
  Discover({store});
  ASSERT_TRUE(agent_.Bus().WaitUntil(
      [&] { return agent_.Bus().Beacons("checkLocationForStore", {store.url}) != 0; }));
  EXPECT_EQ(agent_.Bus().Beacons("checkLocationForStore", {store.url}), 1);
  EXPECT_EQ(agent_.Bus().Beacons("explainLocationForStore", {store.url}),
            json({1, "LAN, 1 of 1 internal beacons answered"}));
  EXPECT_THAT(agent_.LogMessages(),
              testing::IsSupersetOf({"[+] MrvBeaconSvr::explainLocationForStore (" + store.url + ")",
                                     std::string("[-] MrvBeaconSvr::explainLocationForStore "
                                                 "(NETWORK_LOCATION_LAN)")}));
}

TEST_F(ServiceCalls, TheLocationOfAStoreIsDescribedForOtherLanguages) {
  const auto store = Store("s1", "One");
  Discover({store});
  ASSERT_TRUE(agent_.Bus().WaitUntil(
      [&] { return agent_.Bus().Beacons("checkLocationForStore", {store.url}) != 0; }));
  const json numbers = {{{"Name", "answered"}, {"Text", "1"}}, {{"Name", "all"}, {"Text", "1"}}};
  const json counts = {
      {"Name", "counts"}, {"Pattern", "{answered} of {all} internal beacons answered"}, {"Places", numbers}};
  EXPECT_EQ(agent_.Bus().Beacons("describeLocationForStore", {store.url}),
            json({1, {{"Pattern", "LAN, {counts}"}, {"Places", json::array({counts})}}}));
  EXPECT_THAT(agent_.LogMessages(),
              testing::IsSupersetOf({"[+] MrvBeaconSvr::describeLocationForStore (" + store.url + ")",
                                     std::string("[-] MrvBeaconSvr::describeLocationForStore "
                                                 "(NETWORK_LOCATION_LAN)")}));
}

TEST_F(ServiceCalls, IntrospectionEqualsTheShippedInterfaceFiles) {
  const struct {
    std::string name, path, interface;
  } served[] = {
      {"com.morvane.ServiceRecords", "/com/morvane/ServiceRecords", "com.morvane.MrvServiceRecordsService"},
      {"com.morvane.Beacons", "/com/morvane/Beacons", "com.morvane.MrvBeaconService"},
      {"com.morvane.ServiceRecords", "/com/morvane/DistributedNotifications",
       "com.morvane.DistributedNotifications"},
      {"com.morvane.ServiceRecords", "/com/morvane/ServiceRecords/Openings",
       "com.morvane.ServiceRecords.Openings"},
  };
  for (const auto& [name, path, interface] : served) {
    std::ifstream file(agent_.Prefix() / "share/dbus-1/interfaces" / (interface + ".xml"));
    const std::string shipped{std::istreambuf_iterator<char>(file), {}};
    EXPECT_EQ(InterfaceDescription(agent_.Bus().Introspect(name, path), interface),
              InterfaceDescription(shipped, interface));
  }
}

}  // namespace

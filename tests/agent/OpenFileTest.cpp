#include "support/AgentTest.h"

#include <csignal>
#include <filesystem>
#include <fstream>
#include <string_view>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using TestSupport::AgentTest;

class OpenFile : public AgentTest {
 protected:
  OpenFile() { agent_.EnableLog(); }

  // The paths of the files whose handling has begun, by the log.
  [[nodiscard]] std::vector<std::string> OpenedFiles() const {
    constexpr std::string_view kEntry = "[+] MrvServiceRecordsSvr::handleServiceRecordFTA (";
    std::vector<std::string> files;
    for (const std::string& message : agent_.LogMessages()) {
      if (message.starts_with(kEntry))
        files.push_back(message.substr(kEntry.size(), message.size() - kEntry.size() - 1));
    }
    return files;
  }
};

TEST_F(OpenFile, AnAcceptedStoreIsListedSavedAndAnnounced) {
  agent_.Start();
  agent_.Bus().OpenFiles({agent_.URI(OpenableFile("a.cr", {Store("s1", "Störe")}))});
  ASSERT_TRUE(agent_.Bus().WaitUntil([&] { return CountNotifications() == 1; }));

  const auto stores = agent_.Bus().ServiceRecords("allStores");
  ASSERT_EQ(stores.size(), 1U);
  EXPECT_EQ(stores[0]["StoreName"], "Störe");
  EXPECT_EQ(stores[0]["StoreType"], 0);
  EXPECT_EQ(stores[0]["StoreGateways"][1],
            (nlohmann::json{{"GatewayName", "Head Office"},
                            {"GatewayURL", Store("s1", "").gateways[1].location},
                            {"IsDefault", true}}));
  EXPECT_FALSE(stores[0].contains("StoreInternalBeacons"));
  EXPECT_TRUE(std::filesystem::exists(agent_.StoresFile()));
}

TEST_F(OpenFile, TheTrustDialogShowsWhoTheCertificateNames) {
  agent_.Start();
  Open(OpenableFile("a.cr", {Store("s1", "Störe")}));
  const auto dialogs = agent_.Dialogs();
  ASSERT_EQ(dialogs.size(), 1U);
  EXPECT_EQ(dialogs[0].first, "addStore");
  const PropertyList::Dictionary& shown = dialogs[0].second;
  EXPECT_EQ(*shown.Find("StoreName"), PropertyList::Value("Störe"));
  EXPECT_EQ(*shown.Find("StoreProvider"), PropertyList::Value("Example Stores"));
  EXPECT_EQ(*shown.Find("CertificateName"), PropertyList::Value("Morvane Test Authority"));
  EXPECT_EQ(*shown.Find("StoreURL"), PropertyList::Value(Store("s1", "").url));
  const auto* gateways = shown.Find("StoreGateways")->As<PropertyList::Array>();
  ASSERT_EQ(gateways->size(), 2U);
  EXPECT_EQ(*gateways->front().As<PropertyList::Dictionary>()->Find("GatewayName"),
            PropertyList::Value("Head Office"));
}

TEST_F(OpenFile, StoresAreThereAgainAfterARestart) {
  agent_.Start();
  Open(OpenableFile("a.cr", {Store("s2", "Two"), Store("s1", "One")}));
  const auto before = agent_.Bus().ServiceRecords("allStores");
  ASSERT_EQ(before.size(), 2U);
  EXPECT_EQ(agent_.Terminate(), 0);
  agent_.Start();
  EXPECT_EQ(agent_.Bus().ServiceRecords("allStores"), before);
}

TEST_F(OpenFile, ADeclinedStoreChangesNothingAndIsNotAnnounced) {
  int activations = 0;
  agent_.Bus().OfferApplication("/com/morvane/quillon/velt", activations);
  agent_.Bus().OwnName("com.morvane.quillon.velt");
  agent_.Answer("addStore", "declined");
  agent_.Start();
  Open(OpenableFile("a.cr", {Store("s1", "One")}));
  EXPECT_THAT(StoreIDs(), IsEmpty());
  EXPECT_EQ(CountNotifications(), 0U);
  EXPECT_FALSE(std::filesystem::exists(agent_.StoresFile()));
  ASSERT_EQ(agent_.Dialogs().size(), 1U) << "declining needs no error dialog";
  // What the agent had to say to the client came before its end.
  EXPECT_EQ(agent_.Terminate(), 0);
  EXPECT_TRUE(agent_.Bus().WaitUntilOwned("com.morvane.ServiceRecords", false));
  EXPECT_EQ(activations, 0) << "the client stays where it is";
}

TEST_F(OpenFile, OfTwoStoresTheOneWithABadServerIsLeftOut) {
  auto bad = Store("s2", "Two");
  bad.gateways.clear();
  bad.url = "https://localhost:1/nobody";
  agent_.Start();
  Open(OpenableFile("a.cr", {Store("s1", "One"), bad}));
  EXPECT_THAT(StoreIDs(), ElementsAre("s1"));
  EXPECT_EQ(CountNotifications(), 1U);
  const auto dialogs = agent_.Dialogs();
  ASSERT_EQ(dialogs.size(), 2U);
  EXPECT_EQ(dialogs[1].first, "errorMessage");
}

TEST_F(OpenFile, AStoreAlreadyHeldIsReplacedOnlyWithConsent) {
  agent_.Start();
  Open(OpenableFile("a.cr", {Store("s1", "Old")}));
  const std::string newer = OpenableFile("b.cr", {Store("s1", "New")});

  agent_.Answer("replaceStore", "declined");
  Open(newer);
  EXPECT_EQ(agent_.Bus().ServiceRecords("storeForID", {"s1"})["StoreName"], "Old");
  EXPECT_EQ(CountNotifications(), 1U);

  agent_.Answer("replaceStore", "accepted");
  Open(newer);
  EXPECT_EQ(agent_.Bus().ServiceRecords("storeForID", {"s1"})["StoreName"], "New");
  EXPECT_EQ(CountNotifications(), 2U);
  EXPECT_EQ(*agent_.Dialogs().back().second.Find("StoreName"), PropertyList::Value("Old"));
}

TEST_F(OpenFile, AFileOfAnotherHostIsNobodysFile) {
  agent_.Start();
  const std::string path = OpenableFile("a.cr", {Store("s1", "One")});
  agent_.Bus().OpenFiles({"file://elsewhere.example" + path, "file://LocalHost" + path,
                          "http://localhost" + path, "file://localhost.example" + path, "file:" + path});
  ASSERT_TRUE(agent_.Bus().WaitUntil([&] { return CountNotifications() == 2; }));
  EXPECT_EQ(agent_.Terminate(), 0);
  EXPECT_EQ(OpenedFiles(), (std::vector<std::string>{path, path}));
}

TEST_F(OpenFile, AFileWhoseNameIsNotUTF8IsNotReadUnderAnotherName) {
  auto agent = agent_.Run({}, {.captureErrors = true});
  ASSERT_TRUE(agent_.Bus().WaitUntilOwned("com.morvane.ServiceRecords", true));
  const std::string path = OpenableFile("Store.cr", {Store("s1", "One")});
  agent_.Bus().OpenFiles({"file://" + path.substr(0, path.size() - 3) + "%F6.cr", "file://" + path});
  ASSERT_TRUE(agent_.Bus().WaitUntil([&] { return CountNotifications() == 1; }));
  agent.Signal(SIGTERM);
  EXPECT_EQ(agent.Wait(), 0);
  EXPECT_EQ(OpenedFiles(), std::vector<std::string>{path});
  EXPECT_THAT(agent.Output(),
              testing::HasSubstr("the name of \"" + path + "\" is not UTF-8; rename the file"));
}

TEST_F(OpenFile, AMissingFileShowsNoDialog) {
  agent_.Start();
  Open("/nowhere/at/all.cr");
  EXPECT_THAT(agent_.Dialogs(), IsEmpty());
  EXPECT_THAT(agent_.LogMessages(), testing::Contains("...Failed to read SR file."));
}

TEST_F(OpenFile, AFileWithoutStoresShowsOneErrorDialog) {
  agent_.Start();
  Open(agent_.Write("a.cr", "this is no document").string());
  ASSERT_TRUE(agent_.Bus().WaitUntil([&] { return agent_.Dialogs().size() == 1; }));
  EXPECT_EQ(agent_.Dialogs()[0].first, "errorMessage");
  EXPECT_THAT(StoreIDs(), IsEmpty());
}

TEST_F(OpenFile, WhileATrustDialogIsOpenBothServicesAnswer) {
  agent_.Start();
  Open(OpenableFile("a.cr", {Store("s1", "One")}));
  agent_.HoldDialogs();
  const std::uint64_t call = agent_.Bus().StartServiceRecords("handleServiceRecordFTA",
                                                              {OpenableFile("b.cr", {Store("s2", "Two")})});
  ASSERT_TRUE(agent_.Bus().WaitUntil([&] { return agent_.Dialogs().size() == 2; }));

  EXPECT_THAT(StoreIDs(), ElementsAre("s1"));
  EXPECT_EQ(agent_.Bus().Beacons("getCurrentGatewayForStore", {Store("s1", "").url})["GatewayName"],
            "Head Office");
  EXPECT_FALSE(agent_.Bus().HasReply(call));

  agent_.Release("accepted");
  agent_.Bus().WaitForReply(call);
  EXPECT_THAT(StoreIDs(), ElementsAre("s1", "s2"));
}

TEST_F(OpenFile, TwoFilesOpenedTogetherAreBothHandled) {
  agent_.Start();
  const auto first = agent_.Bus().StartServiceRecords("handleServiceRecordFTA",
                                                      {OpenableFile("a.cr", {Store("s1", "One")})});
  const auto second = agent_.Bus().StartServiceRecords("handleServiceRecordFTA",
                                                       {OpenableFile("b.cr", {Store("s2", "Two")})});
  agent_.Bus().WaitForReply(first);
  agent_.Bus().WaitForReply(second);
  EXPECT_THAT(StoreIDs(), ElementsAre("s1", "s2"));
  EXPECT_EQ(CountNotifications(), 2U);
  EXPECT_EQ(agent_.Terminate(), 0);
  agent_.Start();
  EXPECT_THAT(StoreIDs(), ElementsAre("s1", "s2")) << "the file agrees with the list";
}

TEST_F(OpenFile, AHostileDocumentCostsNothingAndTheAgentGoesOn) {
  std::string bomb =
      "<?xml version=\"1.0\"?><!DOCTYPE Services [<!ENTITY a \"" + std::string(1000, 'x') + "\">";
  for (char name = 'b'; name <= 'k'; ++name) {
    const std::string inner = std::string("&") + static_cast<char>(name - 1) + ";";
    std::string value;
    for (int i = 0; i < 10; ++i) value += inner;
    bomb += std::string("<!ENTITY ") + name + " \"" + value + "\">";
  }
  bomb += "]><Services>&k;</Services>";
  agent_.Start();
  Open(agent_.Write("a.cr", bomb).string());
  EXPECT_THAT(agent_.LogMessages(), testing::Contains(testing::StartsWith(
                                        "Exception parsing document containning Service Records: the "
                                        "document expands more than 1000 entities")));
  EXPECT_THAT(StoreIDs(), IsEmpty());
}

TEST_F(OpenFile, TheLogTellsTheWholeFlowInOrder) {
  agent_.Start();
  const std::string file = OpenableFile("a.cr", {Store("s1", "One")});
  const std::string gateway = Store("s1", "").gateways[1].location;
  Open(file);
  std::vector<std::string> flow;
  for (const std::string& message : agent_.LogMessages()) {
    // The location library's lines come from its own thread.
    const bool isLocation = message.starts_with("store ") || message.starts_with("network");
    if (!isLocation && !message.starts_with("Gateway selected by user")) flow.push_back(message);
  }
  EXPECT_THAT(flow, ElementsAre("Service Records Logging Active (v1.0.0)",
                                "[+] MrvServiceRecordsSvr::handleServiceRecordFTA (" + file + ")",
                                "-> Outbound SR User confirmation started\"" + file + "\"",
                                "No Errors Detected", "...SR document parsed successfully.",
                                ".......Validation for server: " + gateway, "........-> success",
                                "<- Outbound SR User confirmation finished. File: \"" + file + "\"",
                                "-> Outbound SR DS confirmation started",
                                "MakeConnection: direct to the store s1, because network location is: 1",
                                "...DS trust verification succeded for store: s1",
                                "...Received DiscoveryDocument: <?xml version=\"1.0\" encoding=\"UTF-8\"?>",
                                "No Errors Detected", "<- Outbound DS confirmation finished",
                                "[-] MrvServiceRecordsSvr::handleServiceRecordFTA"));
}

}  // namespace

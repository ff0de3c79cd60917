#include "support/AgentTest.h"
#include "support/LoopbackListener.h"
#include "support/RawServer.h"
#include "support/ScriptedCredentials.h"

#include <algorithm>
#include <filesystem>
#include <fstream>

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using TestSupport::AgentTest;
using TestSupport::DiscoveryDocument;
using TestSupport::LoopbackListener;
using TestSupport::RawServer;
using TestSupport::ScriptedCredentials;
using TestSupport::StoreText;
using TestSupport::TestAuthority;
using TestSupport::WebServer;

namespace {

constexpr std::uint64_t kLAN = 1;
constexpr std::uint64_t kOutside = 2;
constexpr std::uint64_t kNone = 3;

// The tests' store server stands inside the store's network, so a store is asked directly.
class DiscoveryConfirmation : public AgentTest {
 protected:
  DiscoveryConfirmation() { agent_.EnableLog(); }

  void OpenStore(const StoreText& store) { Open(OpenableFile(store.id + ".cr", {store})); }

  std::vector<std::string> ErrorMessages() {
    std::vector<std::string> messages;
    for (const auto& [request, details] : agent_.Dialogs()) {
      if (request == "errorMessage") messages.push_back(*details.Find("ErrorMessage")->As<std::string>());
    }
    return messages;
  }

  // The file of a store whose discovery document says something else, or does not exist.
  std::string FileOnly(const StoreText& store) {
    return agent_.Write(store.id + ".cr", TestSupport::ServiceRecordDocument({store})).string();
  }

  // Opens the store, whose discovery fails, and expects that it stays as the user confirmed it.
  void ExpectKeptAsConfirmedByTheUser(const StoreText& store, const std::string& message) {
    Open(FileOnly(store));
    EXPECT_THAT(StoreIDs(), ElementsAre(store.id));
    EXPECT_EQ(CountNotifications(), 1U);
    ASSERT_TRUE(agent_.Bus().WaitUntil([&] { return !ErrorMessages().empty(); }));
    EXPECT_THAT(ErrorMessages(), ElementsAre(HasSubstr(message)));
    EXPECT_THAT(agent_.LogMessages(), Contains("...DS trust verification failed for store: " + store.id));
    EXPECT_THAT(agent_.LogMessages(), Contains("<- Outbound DS confirmation finished"));
    EXPECT_EQ(agent_.Bus().ServiceRecords("storeForID", {store.id})["StoreName"], store.name);
  }

  static constexpr char kNotReached[] = "could not be reached";
  static constexpr char kNoDocument[] = "sent no discovery document";
};

TEST_F(DiscoveryConfirmation, InsideItsNetworkAStoreIsAskedDirectlyAndItsDocumentMerged) {
  agent_.Start();
  const StoreText store = Store("s1", "One");
  const std::string file = OpenableFile("a.cr", {store});
  StoreText described = store;
  described.name = "One, as its discovery service calls it";
  described.gateways.push_back({.name = "Added", .location = "https://added.example"});
  Serve(store, DiscoveryDocument({described}));
  Open(file);

  const auto merged = agent_.Bus().ServiceRecords("storeForID", {"s1"});
  EXPECT_EQ(merged["StoreName"], described.name);
  EXPECT_EQ(merged["StoreGateways"].size(), 3U);
  EXPECT_EQ(agent_.Bus().Beacons("checkLocationForStore", {store.url}), kLAN);
  EXPECT_EQ(CountNotifications(), 1U);
  EXPECT_THAT(ErrorMessages(), IsEmpty());
  EXPECT_THAT(agent_.LogMessages(),
              Contains("MakeConnection: direct to the store s1, because network location is: 1"));
  EXPECT_THAT(agent_.LogMessages(), Contains("...DS trust verification succeded for store: s1"));

  EXPECT_EQ(agent_.Terminate(), 0);
  agent_.Start();
  EXPECT_EQ(agent_.Bus().ServiceRecords("storeForID", {"s1"}), merged);
}

TEST_F(DiscoveryConfirmation, AChangedLocationIsAnnouncedWithTheStoresUrl) {
  agent_.Start();
  const StoreText store = Store("s1", "One");
  OpenStore(store);
  EXPECT_TRUE(agent_.Bus().WaitUntil([&] {
    return std::ranges::count(agent_.Bus().Notifications(), "MRVNetworkLocationChanged " + store.url) > 0;
  }));
}

TEST_F(DiscoveryConfirmation, AnAnswerThatIsNoDiscoveryDocumentIsShown) {
  agent_.Start();
  const StoreText store = Store("s1", "One");
  Serve(store, "<html>Welcome</html>");
  ExpectKeptAsConfirmedByTheUser(store, kNoDocument);
}

TEST_F(DiscoveryConfirmation, AnAnswerThatIsNotUtf8IsAFailedConnection) {
  agent_.Start();
  const StoreText store = Store("s1", "One");
  Serve(store, "<Discovery name='Caf\xE9'/>");
  ExpectKeptAsConfirmedByTheUser(store, kNotReached);
}

TEST_F(DiscoveryConfirmation, AnAnswerOverTheSizeLimitIsAFailedConnection) {
  agent_.Start();
  const StoreText store = Store("s1", "One");
  Serve(store, "<Discovery>" + std::string(16U * 1024 * 1024, ' '));
  ExpectKeptAsConfirmedByTheUser(store, kNotReached);
}

TEST_F(DiscoveryConfirmation, AnAnswerThatBreaksOffIsAFailedConnection) {
  const RawServer raw({"HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\n<Discovery"});
  agent_.Start();
  StoreText store = Store("s1", "One");
  store.url = "http://127.0.0.1:" + std::to_string(raw.Port()) + "/discovery";
  ExpectKeptAsConfirmedByTheUser(store, kNotReached);
}

TEST_F(DiscoveryConfirmation, AfterAFailedConfirmationTheClientIsBroughtForwardAllTheSame) {
  int activations = 0;
  agent_.Bus().OfferApplication("/com/morvane/quillon/velt", activations);
  agent_.Bus().OwnName("com.morvane.quillon.velt");
  agent_.Start();
  ExpectKeptAsConfirmedByTheUser(Store("s1", "One"), kNotReached);
  EXPECT_TRUE(agent_.Bus().WaitUntil([&] { return activations == 1; }));
}

TEST_F(DiscoveryConfirmation, AServerWhoseCertificateDoesNotVerifyIsAFailedConnection) {
  for (const char* certificate : {"expired", "wrong-host", "unknown-issuer"}) {
    const WebServer untrusted(TestAuthority::Shared().TlsServerBlock(certificate));
    TestSupport::TestAgent other(
        std::vector<std::string>{"SSL_CERT_FILE=" + TestAuthority::Shared().Root().string()});
    other.Start();
    StoreText store = Store("s1", "One");
    store.url = untrusted.Address("https") + "/discovery";
    std::ofstream(untrusted.Document("discovery")) << DiscoveryDocument({store});
    const auto file = other.Write("a.cr", TestSupport::ServiceRecordDocument({store}));
    other.Bus().ServiceRecords("handleServiceRecordFTA", {file.string()});
    ASSERT_TRUE(other.Bus().WaitUntil([&] { return other.Dialogs().size() == 2; }));
    EXPECT_THAT(*other.Dialogs()[1].second.Find("ErrorMessage")->As<std::string>(), HasSubstr(kNotReached));
    EXPECT_EQ(other.Bus().ServiceRecords("allStores").size(), 1U);
  }
}

TEST_F(DiscoveryConfirmation, WithoutAnyBeaconTheStoreIsNotAsked) {
  const RawServer raw({"HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n"});
  agent_.Start();
  StoreText store = Store("s1", "One");
  store.url = "http://127.0.0.1:" + std::to_string(raw.Port()) + "/discovery";
  store.internalBeacons = {"https://localhost:1"};
  store.externalBeacons = {"https://localhost:1"};
  ExpectKeptAsConfirmedByTheUser(store, kNotReached);
  EXPECT_EQ(agent_.Bus().Beacons("checkLocationForStore", {store.url}), kNone);
  EXPECT_THAT(raw.Requests(), IsEmpty());
}

TEST_F(DiscoveryConfirmation, TerminationEndsTheWaitForTheLocation) {
  const LoopbackListener neverAnswers;
  agent_.Start();
  StoreText store = Store("s1", "One");
  store.internalBeacons = {"https://localhost:" + std::to_string(neverAnswers.port)};
  agent_.Bus().StartServiceRecords("handleServiceRecordFTA", {FileOnly(store)});
  ASSERT_TRUE(agent_.Bus().WaitUntil([&] {
    const auto messages = agent_.LogMessages();
    return std::find(messages.begin(), messages.end(), "-> Outbound SR DS confirmation started") !=
           messages.end();
  }));
  EXPECT_EQ(agent_.Terminate(), 0);
  EXPECT_THAT(agent_.LogMessages(), Contains("<- Outbound DS confirmation finished"));
}

// A gateway with a log-on stands before the stores' network, and the machine outside of it.
class DiscoveryThroughTheGateway : public DiscoveryConfirmation {
 protected:
  DiscoveryThroughTheGateway()
      : gateway_(TestAuthority::Shared().TlsServerBlock(
            "good", "location / { auth_basic \"Gateway\"; auth_basic_user_file @DOCUMENTS@/users; }")),
        credentials_(agent_.BundleFolder()) {
    credentials_.Install();
    std::ofstream(gateway_.Document("users")) << "ann:{PLAIN}secret word\n";
    agent_.Start();
  }

  // What the gateway hands out as the store's discovery document.
  [[nodiscard]] std::filesystem::path DocumentOf(const std::string& id) const {
    return gateway_.Document("https/localhost:1/" + id + "/discovery");
  }

  // A store that only the gateway reaches; its discovery document names it otherwise.
  StoreText Behind(const std::string& id) {
    StoreText store = Store(id, "Before");
    store.url = "https://localhost:1/" + id + "/discovery";
    store.internalBeacons = {"https://localhost:1"};
    store.gateways = {{.name = "Gateway", .location = gateway_.Address("https"), .isDefault = true}};
    StoreText described = store;
    described.name = "Confirmed";
    std::filesystem::create_directories(DocumentOf(id).parent_path());
    std::ofstream(DocumentOf(id)) << DiscoveryDocument({described});
    return store;
  }

  std::string NameOf(const std::string& id) {
    return agent_.Bus().ServiceRecords("storeForID", {id})["StoreName"];
  }

  WebServer gateway_;
  ScriptedCredentials credentials_;
};

TEST_F(DiscoveryThroughTheGateway, OutsideTheStoreIsConfirmedThroughItsGatewayWithALogOn) {
  const StoreText store = Behind("s1");
  credentials_.WillGive("ann", "secret word");
  Open(FileOnly(store));
  EXPECT_EQ(NameOf("s1"), "Confirmed");
  EXPECT_EQ(agent_.Bus().Beacons("checkLocationForStore", {store.url}), kOutside);
  EXPECT_THAT(ErrorMessages(), IsEmpty());
  const auto messages = agent_.LogMessages();
  EXPECT_THAT(messages,
              Contains("MakeConnection: using Warden for the store s1, because network location is: 2"));
  EXPECT_THAT(messages, Contains("...DS trust verification succeded for store: s1"));
  EXPECT_THAT(messages, Not(Contains(HasSubstr("secret word")))) << "the log holds no secret";
}

TEST_F(DiscoveryThroughTheGateway, ARejectedLogOnIsAskedForThreeTimesAndThenShown) {
  for (int i = 0; i < 4; ++i) credentials_.WillGive("ann", "wrong");
  ExpectKeptAsConfirmedByTheUser(Behind("s1"), kNotReached);
  EXPECT_THAT(credentials_.Actions(), ElementsAre("get", "get", "get"));
}

TEST_F(DiscoveryThroughTheGateway, AnAnswerThatIsNotUtf8IsNoDiscoveryDocument) {
  const StoreText store = Behind("s1");
  std::ofstream(DocumentOf("s1")) << "<Discovery name='Caf\xE9'/>";
  credentials_.WillGive("ann", "secret word");
  ExpectKeptAsConfirmedByTheUser(store, kNoDocument);
}

TEST_F(DiscoveryThroughTheGateway, ACancelledLogOnShowsNothingAndKeepsTheStore) {
  credentials_.WillReply("status=cancelled");
  Open(FileOnly(Behind("s1")));
  EXPECT_EQ(NameOf("s1"), "Before");
  EXPECT_EQ(CountNotifications(), 1U);
  EXPECT_THAT(ErrorMessages(), IsEmpty());
  EXPECT_THAT(agent_.LogMessages(), Contains("...DS trust verification was canceled by user for store: s1"));
}

TEST_F(DiscoveryThroughTheGateway, OfTwoStoresOneCancellationIsEnough) {
  credentials_.WillReply("status=cancelled");
  const std::string file =
      agent_.Write("two.cr", TestSupport::ServiceRecordDocument({Behind("s1"), Behind("s2")})).string();
  Open(file);
  EXPECT_THAT(credentials_.Actions(), ElementsAre("get"));
  EXPECT_THAT(agent_.LogMessages(), Contains("...DS trust verification was canceled by user for store: s2"));
}

TEST_F(DiscoveryThroughTheGateway, LogOnsOfSeveralFilesAreAskedForAtOnceAndTerminationEndsThemAll) {
  credentials_.WillHold();
  for (const char* id : {"s1", "s2", "s3"}) {
    agent_.Bus().StartServiceRecords("handleServiceRecordFTA", {FileOnly(Behind(id))});
  }
  credentials_.WaitUntilHeld(3);
  EXPECT_EQ(agent_.Terminate(), 0);
  EXPECT_THAT(agent_.LogMessages(), Contains(HasSubstr("MorvaneWarden_Prepare2 returned error 8")).Times(3));
}

TEST_F(DiscoveryThroughTheGateway, AFileThatWaitsForALogOnMakesRoomForTheNext) {
  constexpr std::size_t kMoreThanAreWorkedOn = 9;
  credentials_.WillHold();
  for (std::size_t i = 0; i < kMoreThanAreWorkedOn; ++i) {
    agent_.Bus().StartServiceRecords("handleServiceRecordFTA", {FileOnly(Behind("s" + std::to_string(i)))});
  }
  credentials_.WaitUntilHeld(kMoreThanAreWorkedOn);
  EXPECT_EQ(agent_.Terminate(), 0);
}

TEST_F(DiscoveryThroughTheGateway, WhileALogOnIsAskedForTheServicesAnswer) {
  credentials_.WillHold();
  agent_.Bus().StartServiceRecords("handleServiceRecordFTA", {FileOnly(Behind("s1"))});
  credentials_.WaitUntilHeld();
  EXPECT_THAT(StoreIDs(), ElementsAre("s1"));
  EXPECT_EQ(agent_.Terminate(), 0);
}

}  // namespace

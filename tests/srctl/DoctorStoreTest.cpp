#include "srctl/DoctorTest.h"
#include "support/LoopbackListener.h"
#include "support/PseudoTerminal.h"

#include <fstream>
#include <sstream>

using nlohmann::json;
using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;
using TestSupport::PseudoTerminal;
using TestSupport::ServerBlock;
using TestSupport::StoreText;
using TestSupport::TestAuthority;
using TestSupport::WebServer;

namespace {

class DoctorOfStores : public DoctorTest {
 protected:
  // What is said about a store whose server has that certificate.
  [[nodiscard]] SrctlRun WithCertificate(const std::string& name) {
    const WebServer other(TestAuthority::Shared().TlsServerBlock(name));
    GiveStores({StoreAt(other.Address("https"))});
    SrctlRun run = Srctl({"doctor"});
    EXPECT_EQ(run.status, 1);
    EXPECT_THAT(StoreLine(run, "discovery document"), StartsWith("note: "));
    return run;
  }

  // How many servers' checks a server has seen, which logs its requests.
  [[nodiscard]] static std::size_t CountHeads(const WebServer& server) {
    std::ifstream requests(server.Document("requests"));
    std::size_t heads = 0;
    for (std::string line; std::getline(requests, line);)
      heads += line.find("\"HEAD ") != std::string::npos ? 1 : 0;
    return heads;
  }

  // A store whose own network is not reached, but whose external beacon answers.
  [[nodiscard]] StoreText OutsideStore() const {
    StoreText store = StoreAt(NobodysAddress());
    store.internalBeacons = {NobodysAddress()};
    return store;
  }
};

TEST_F(DoctorOfStores, FindsNothingWrongWithAStoreThatWorks) {
  const StoreText store = WorkingStore("s1", "One");
  GiveStores({store, WorkingStore("s2", "Two")});
  const SrctlRun run = Srctl({"doctor"});
  EXPECT_EQ(run.status, 0) << run.output;
  EXPECT_THAT(run.errors, IsEmpty());
  EXPECT_EQ(StoreLine(run, "server"),
            "ok: store \"One\" (s1), server: " + store.url +
                ": it answers, and this machine trusts its certificate, issued by Morvane Test Authority.");
  EXPECT_EQ(StoreLine(run, "discovery document"),
            "ok: store \"One\" (s1), discovery document: It is valid, and describes one store.");
  EXPECT_EQ(StoreLine(run, "location"),
            "ok: store \"One\" (s1), location: LAN, this machine is in the store's network. "
            "Why: LAN, 1 of 1 internal beacons answered.");
  EXPECT_THAT(run.output,
              AllOf(HasSubstr("ok: store \"Two\" (s2), location: LAN"), HasSubstr("\nNothing is wrong.\n")));
}

TEST_F(DoctorOfStores, NamesWhoAnswersForTheWholeChain) {
  const WebServer other(TestAuthority::Shared().TlsServerBlock("chained"));
  GiveStores({StoreAt(other.Address("https"))});
  EXPECT_THAT(StoreLine(Srctl({"doctor"}), "server"),
              AllOf(StartsWith("ok: "), HasSubstr("issued by Morvane Test Authority.")));
}

TEST_F(DoctorOfStores, NamesNobodyWhereTheIssuerHasNoName) {
  const TestAuthority& authority = TestAuthority::Shared();
  const WebServer other(authority.TlsServerBlock("nameless-issuer"));
  TestSupport::ChildProcess srctl({"env", "SSL_CERT_FILE=" + authority.File("nameless-issuer.pem").string(),
                                   SR_STAGE_DIR "/bin/srctl", "doctor", other.Address("https")},
                                  agent_.Environment());
  EXPECT_EQ(srctl.Wait(), 1) << "it serves no document";
  EXPECT_THAT(srctl.Output(), HasSubstr("it answers, and this machine trusts its certificate.\n"));
}

TEST_F(DoctorOfStores, ExplainsAnExpiredCertificate) {
  const SrctlRun run = WithCertificate("expired");
  ExpectProblem(StoreLine(run, "server"), "does not trust it: its certificate expired on 20",
                "See that the clock of this machine is right (date)");
}

TEST_F(DoctorOfStores, ExplainsACertificateForAnotherName) {
  const SrctlRun run = WithCertificate("wrong-host");
  ExpectProblem(StoreLine(run, "server"), "does not trust it: its certificate is another server's: ",
                "When you are behind a hotspot's sign-in page, open a web browser");
}

TEST_F(DoctorOfStores, ExplainsAnUnknownAuthority) {
  const SrctlRun run = WithCertificate("unknown-issuer");
  ExpectProblem(
      StoreLine(run, "server"),
      "does not trust it: its certificate was issued by Example Stores, whom this machine does not know.",
      "Ask your administrator for the authority's root certificate");
}

TEST_F(DoctorOfStores, ExplainsCertificatesThatNameNoHostAndNoIssuer) {
  EXPECT_THAT(StoreLine(WithCertificate("no-host"), "server"),
              HasSubstr("does not trust it: its certificate names no host. Next: "));
  agent_.Bus().ServiceRecords("deleteStore", {"s1"});
  EXPECT_THAT(StoreLine(WithCertificate("nameless-issuer"), "server"),
              HasSubstr("its certificate was issued by somebody whom this machine does not know. Next: "));
}

TEST_F(DoctorOfStores, ExplainsARevokedCertificate) {
  const TestAuthority& authority = TestAuthority::Shared();
  const WebServer other(authority.TlsServerBlock(
      "revoked", "ssl_stapling on; ssl_stapling_file " + authority.File("revoked.ocsp").string() + ";"));
  GiveStores({StoreAt(other.Address("https"))});
  ExpectProblem(StoreLine(Srctl({"doctor"}), "server"), "its certificate has been revoked.",
                "Ask the administrator of the server");
}

TEST_F(DoctorOfStores, ExplainsAServerThatSpeaksNoTls) {
  const WebServer other(ServerBlock("", ""));
  GiveStores({StoreAt(other.Address("https"))});
  ExpectProblem(StoreLine(Srctl({"doctor"}), "server"),
                "does not trust it: no secure connection to it could be made (",
                "Ask the administrator of the server");
}

TEST_F(DoctorOfStores, ExplainsAServerThatIsTooOldForThisMachine) {
  const WebServer other(
      TestAuthority::Shared().TlsServerBlock("good", "ssl_protocols TLSv1.1; ssl_ciphers ALL:@SECLEVEL=0;"));
  GiveStores({StoreAt(other.Address("https"))});
  ExpectProblem(StoreLine(Srctl({"doctor"}), "server"),
                "does not trust it: it and this machine have no secure protocol in common.",
                "Ask the administrator of the server");
}

TEST_F(DoctorOfStores, ExplainsAServerThatDemandsAClientCertificate) {
  const TestAuthority& authority = TestAuthority::Shared();
  TestSupport::ChildProcess other({"openssl", "s_server", "-accept", "127.0.0.1:0", "-cert",
                                   authority.File("good.pem"), "-key", authority.File("good.key"), "-CAfile",
                                   authority.Root(), "-Verify", "1", "-verify_return_error", "-www"},
                                  {}, {.captureErrors = true});
  const std::string start = "ACCEPT 127.0.0.1:";
  const std::string output = other.WaitForOutput(start);
  const std::string port = std::to_string(std::stoi(output.substr(output.find(start) + start.size())));
  GiveStores({StoreAt("https://localhost:" + port)});
  ExpectProblem(StoreLine(Srctl({"doctor"}), "server"),
                "does not trust it: no secure connection to it could be made (",
                "Ask the administrator of the server");
}

TEST_F(DoctorOfStores, ExplainsAServerThatDoesNotAnswer) {
  StoreText store = WorkingStore("s1", "One");
  store.url = NobodysAddress();
  GiveStores({store});
  const SrctlRun run = Srctl({"doctor"});
  EXPECT_EQ(run.status, 1);
  ExpectProblem(StoreLine(run, "server"), "it cannot be contacted: nobody takes the connection.",
                "Check your network connection");
  EXPECT_THAT(StoreLine(run, "discovery document"), StartsWith("note: "));
  EXPECT_THAT(StoreLine(run, "location"), HasSubstr("LAN, this machine is in the store's network."));
}

TEST_F(DoctorOfStores, TellsAProxyThatDoesNotLeadToTheServer) {
  const WebServer proxy(ServerBlock("", ""));
  StoreText store = WorkingStore("s1", "One");
  store.url = NobodysAddress();
  GiveStores({store});
  std::vector<std::string> environment = agent_.Environment();
  environment.push_back("https_proxy=" + proxy.Address("http"));
  ExpectProblem(
      StoreLine(RunSrctl({"doctor"}, environment), "server"),
      "it cannot be contacted: the proxy does not lead to it (status 4",
      "Ask your administrator about the proxy (the variables https_proxy and all_proxy). One that wants a "
      "log-on (status 407) gets none but what the variable names.");
}

TEST_F(DoctorOfStores, ExplainsAnAddressThatLeadsElsewhereThanItShows) {
  StoreText store = WorkingStore("s1", "One");
  store.url = "https://bank.example%2Fstores@127.0.0.1:1/s1";
  GiveStores({store});
  ExpectProblem(StoreLine(Srctl({"doctor"}), "server"),
                "it is not contacted: the address can be read as another server's or holds a user name.",
                "Ask your administrator for a corrected service record");
}

TEST_F(DoctorOfStores, NotesAServerWithoutTls) {
  const WebServer other(ServerBlock("", ""));
  const StoreText store = StoreAt(other.Address("http"));
  WriteDocument(other, "s1", TestSupport::DiscoveryDocument({store}));
  GiveStores({store});
  const SrctlRun run = Srctl({"doctor"});
  EXPECT_EQ(run.status, 0) << run.output;
  EXPECT_THAT(StoreLine(run, "server"), AllOf(StartsWith("note: "), HasSubstr("because the address is http."),
                                              HasSubstr(" Next: Ask your administrator")));
  EXPECT_THAT(StoreLine(run, "discovery document"), StartsWith("ok: "));
}

TEST_F(DoctorOfStores, FromOutsideTheGatewayCountsAndNotTheServer) {
  GiveStores({OutsideStore()});
  const SrctlRun run = Srctl({"doctor"});
  EXPECT_EQ(run.status, 0) << run.output;
  EXPECT_THAT(StoreLine(run, "server"),
              AllOf(StartsWith("note: "), HasSubstr("reached through its gateway.")));
  EXPECT_EQ(StoreLine(run, "gateway"),
            "ok: store \"One\" (s1), gateway: " + Store("s1", "").gateways[1].location +
                ": it answers, and this machine trusts its certificate, issued by Morvane Test Authority.");
  EXPECT_THAT(
      StoreLine(run, "location"),
      AllOf(StartsWith("ok: "), HasSubstr("outside, this machine is outside the store's network. Why: "
                                          "outside, 0 of 1 internal beacons answered")));
}

TEST_F(DoctorOfStores, FromOutsideAGatewayThatDoesNotAnswerIsAProblem) {
  StoreText store = OutsideStore();
  store.gateways[1].location = NobodysAddress();
  GiveStores({store});
  const SrctlRun run = Srctl({"doctor"});
  EXPECT_EQ(run.status, 1);
  ExpectProblem(StoreLine(run, "gateway: " + store.gateways[1].location), "it cannot be contacted",
                "Check your network connection");
}

TEST_F(DoctorOfStores, EachServerOfTheGatewaysIsLookedAtOnceWhereverTheMachineStands) {
  const WebServer other(TestAuthority::Shared().TlsServerBlock("expired"));
  StoreText inside = WorkingStore("s1", "One");
  StoreText outside = OutsideStore();
  const std::string head = inside.gateways[1].location;
  for (StoreText* store : {&inside, &outside}) {
    store->gateways[0].location = other.Address("https") + "/first";
    store->gateways.push_back({.name = "Second", .location = other.Address("https") + "/second"});
    GiveStores({*store});
    const SrctlRun run = Srctl({"doctor"});
    EXPECT_EQ(run.status, 1);
    EXPECT_THAT(StoreLine(run, "gateway: " + head), StartsWith("ok: "));
    ExpectProblem(StoreLine(run, "gateway: " + store->gateways[0].location), "its certificate expired on",
                  "See that");
    EXPECT_THAT(run.output, Not(HasSubstr("/second")));
    agent_.Bus().ServiceRecords("deleteStore", {"s1"});
  }
}

TEST_F(DoctorOfStores, TheServerOfTheStoreAndItsGatewaysIsAskedOnce) {
  const WebServer other(TestAuthority::Shared().TlsServerBlock("good", "access_log @DOCUMENTS@/requests;"));
  StoreText store = StoreAt(other.Address("https"));
  for (auto& gateway : store.gateways) gateway.location = other.Address("https") + "/" + gateway.name;
  const std::string file = agent_.Write("a.cr", TestSupport::ServiceRecordDocument({store})).string();
  EXPECT_THAT(StoreLine(Srctl({"doctor", file}), "gateway"), StartsWith("ok: "));
  // The server logs a request once it has been answered.
  EXPECT_TRUE(agent_.Bus().WaitUntil([&] { return CountHeads(other) > 0; }));
  EXPECT_EQ(CountHeads(other), 1U);
}

TEST_F(DoctorOfStores, AGatewayThatHangsKeepsNoOtherOfItsStoreWaiting) {
  const TestSupport::LoopbackListener silent;
  const WebServer other(TestAuthority::Shared().TlsServerBlock("good", "access_log @DOCUMENTS@/requests;"));
  StoreText store = WorkingStore("s1", "One");
  store.gateways[1].location = "https://localhost:" + std::to_string(silent.port);
  store.gateways[0].location = other.Address("https");
  const std::string file = agent_.Write("a.cr", TestSupport::ServiceRecordDocument({store})).string();
  TestSupport::ChildProcess srctl = StartSrctl({"doctor", file});
  EXPECT_TRUE(agent_.Bus().WaitUntil([&] { return CountHeads(other) == 1; }));
  EXPECT_THAT(srctl.WaitForOutput(", server: "), Not(HasSubstr(", gateway: ")))
      << "they are told in their order";
  EXPECT_TRUE(srctl.IsRunning());
}

TEST_F(DoctorOfStores, FromInsideAGatewayThatDoesNotAnswerIsOnlyNoted) {
  StoreText store = WorkingStore("s1", "One");
  store.gateways[1].location = NobodysAddress();
  const std::string note = "From inside the store is reached without it.";
  const SrctlRun unlisted = Srctl({"doctor", OpenableFile("a.cr", {store})});
  GiveStores({store});
  for (const SrctlRun& run : {unlisted, Srctl({"doctor"})}) {
    EXPECT_EQ(run.status, 0) << run.output;
    EXPECT_THAT(StoreLine(run, "gateway: " + store.gateways[1].location),
                AllOf(StartsWith("note: "), HasSubstr("it cannot be contacted"), HasSubstr(note)));
  }
  store.url = NobodysAddress();
  EXPECT_THAT(Srctl({"doctor", OpenableFile("a.cr", {store})}).output, Not(HasSubstr(note)));
}

TEST_F(DoctorOfStores, AGatewayWhoseAddressLeadsElsewhereThanItShowsIsAProblem) {
  StoreText store = WorkingStore("s1", "One");
  store.gateways[0].location = "https://bank.example%2Fstores@127.0.0.1:1/s1";
  GiveStores({store});
  ExpectProblem(StoreLine(Srctl({"doctor"}), "gateway: " + store.gateways[0].location),
                "the address can be read as another server's", "Ask your administrator");
}

TEST_F(DoctorOfStores, FromOutsideAServerThatNobodyCanTrustIsAProblem) {
  const WebServer other(TestAuthority::Shared().TlsServerBlock("expired"));
  StoreText store = OutsideStore();
  store.url = other.Address("https");
  GiveStores({store});
  ExpectProblem(StoreLine(Srctl({"doctor"}), "server"), "its certificate expired on", "See that the clock");
}

TEST_F(DoctorOfStores, WithoutANetworkSaysToConnect) {
  StoreText store = OutsideStore();
  store.externalBeacons = {NobodysAddress()};
  GiveStores({store});
  const SrctlRun run = Srctl({"doctor"});
  EXPECT_EQ(run.status, 1);
  ExpectProblem(StoreLine(run, "location"), "none, there is no network", "Connect to a network");
}

TEST_F(DoctorOfStores, BehindAHotspotSaysToSignIn) {
  const WebServer portal(ServerBlock("", "location / { return 302 http://portal.example/; }"));
  StoreText store = OutsideStore();
  store.externalBeacons = {portal.Address("http")};
  GiveStores({store});
  const SrctlRun run = Srctl({"doctor"});
  EXPECT_EQ(run.status, 1);
  const std::string signIn = "Open a web browser, sign in to the hotspot";
  ExpectProblem(StoreLine(run, "location"), "hotspot, this machine is behind a hotspot's sign-in page.",
                signIn);
  ExpectProblem(StoreLine(run, "server"), "it cannot be contacted", signIn);
}

TEST_F(DoctorOfStores, EachFindingIsOneLineWhateverTheStoreIsCalled) {
  GiveStores({WorkingStore("s1", "One&#10;ok: everything&#8238;")});
  const SrctlRun run = Srctl({"doctor"});
  EXPECT_THAT(run.output, AllOf(HasSubstr("store \"One\uFFFDok: everything\uFFFD\" (s1), server: "),
                                Not(HasSubstr("\nok: everything"))));
}

TEST_F(DoctorOfStores, JsonNamesTheStore) {
  GiveStores({WorkingStore("s1", "One")});
  const json findings = json::parse(Srctl({"doctor", "--json"}).output);
  EXPECT_EQ(findings["problems"], 0);
  EXPECT_EQ(findings["checks"][8]["store"], "s1");
  EXPECT_EQ(findings["checks"][8]["check"], "server");
}

TEST_F(DoctorOfStores, OneStoreIsLookedAtAlone) {
  GiveStores({WorkingStore("s1", "One"), WorkingStore("s2", "Two")});
  const SrctlRun run = Srctl({"doctor", "--store", "s2"});
  EXPECT_EQ(run.status, 0) << run.output;
  EXPECT_THAT(run.output, AllOf(StartsWith("ok: store \"Two\" (s2), server: "), Not(HasSubstr("One")),
                                HasSubstr("\nNothing is wrong.\n")));
}

TEST_F(DoctorOfStores, RefusesAStoreThatIsNotInTheList) {
  const SrctlRun run = Srctl({"doctor", "--store", "s9", "--json-lines"});
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.output, IsEmpty());
  EXPECT_EQ(run.errors, "srctl: There is no store with the id \"s9\". Ids: srctl list\n");
}

TEST_F(DoctorOfStores, JsonLinesTellOneFindingEach) {
  StoreText store = WorkingStore("s1", "One");
  store.url = NobodysAddress();
  GiveStores({store});
  const SrctlRun run = Srctl({"doctor", "--store", "s1", "--json-lines"});
  EXPECT_EQ(run.status, 1);
  std::vector<std::string> told;
  std::istringstream lines(run.output);
  for (std::string line; std::getline(lines, line);) {
    const json finding = json::parse(line);
    EXPECT_EQ(finding["store"], "s1");
    EXPECT_TRUE(finding["textMessage"].contains("pattern")) << line;
    told.push_back(finding["result"].get<std::string>() + " " + finding["check"].get<std::string>());
  }
  EXPECT_THAT(told,
              testing::ElementsAre("problem server", "ok gateway", "note discovery document", "ok location"));
}

TEST_F(DoctorOfStores, JsonLinesTellTheTextsAsMessagesToo) {
  StoreText store = WorkingStore("s1", "One");
  store.url = NobodysAddress();
  GiveStores({store});
  std::istringstream lines(Srctl({"doctor", "--store", "s1", "--json-lines"}).output);
  std::string server;
  std::getline(lines, server);
  const json finding = json::parse(server);
  EXPECT_EQ(finding["text"], store.url + ": it cannot be contacted: nobody takes the connection.");
  const json why = {{"pattern", "nobody takes the connection"}, {"places", json::object()}};
  const json answer = {{"pattern", "it cannot be contacted: {why}"}, {"places", {{"why", why}}}};
  EXPECT_EQ(finding["textMessage"], json({{"pattern", "{address}: {answer}."},
                                          {"places", {{"address", store.url}, {"answer", answer}}}}));
  EXPECT_EQ(finding["nextMessage"]["pattern"], finding["next"]);
}

TEST_F(DoctorOfStores, ManyStoresAreLookedAtSideBySideAndToldOneByOne) {
  std::vector<StoreText> stores;
  std::vector<std::string> expected;
  for (char number = 'a'; number <= 'z'; ++number) {
    stores.push_back(WorkingStore(std::string("s") + number, "One"));
    for (const char* check : {"server", "gateway", "discovery document", "location"})
      expected.push_back(std::string("s") + number + " " + check);
  }
  GiveStores(stores);
  std::vector<std::string> told;
  const json findings = json::parse(Srctl({"doctor", "--json"}).output);
  for (const json& finding : findings["checks"]) {
    if (finding["store"].is_string())
      told.push_back(finding["store"].get<std::string>() + " " + finding["check"].get<std::string>());
  }
  EXPECT_EQ(told, expected);
}

TEST_F(DoctorOfStores, AStoreThatHangsKeepsNoOtherWaitingAndATerminalShowsHowFarItIs) {
  const TestSupport::LoopbackListener silent;
  StoreText hanging = WorkingStore("s1", "One");
  hanging.url = "https://localhost:" + std::to_string(silent.port);
  GiveStores({hanging, WorkingStore("s2", "Two")});
  PseudoTerminal terminal;
  TestSupport::ChildProcess srctl(
      {"bash", "-c", "exec \"$0\" doctor 2>\"$1\"", SR_STAGE_DIR "/bin/srctl", terminal.Path()},
      agent_.Environment());
  static_cast<void>(terminal.ReadUntil("Looking at the stores: 1 of 2 done."));
  EXPECT_THAT(srctl.Output(), Not(HasSubstr(": store "))) << "they are told in their order";
}

// ThreadSanitizer starts with stacks of the usual size only.
#ifndef __SANITIZE_THREAD__
TEST_F(DoctorOfStores, WithoutAThreadToBeHadTheStoresAreLookedAtAllTheSame) {
  const std::string file = OpenableFile("a.cr", {WorkingStore("s1", "One"), WorkingStore("s2", "Two")});
  // Stacks of that size do not fit into the address space.
  TestSupport::ChildProcess srctl(
      {"bash", "-c", "ulimit -s 200000000000 && exec \"$0\" doctor \"$1\"", SR_STAGE_DIR "/bin/srctl", file},
      agent_.Environment());
  EXPECT_EQ(srctl.Wait(), 0);
  for (const std::string store : {"store \"One\" (s1)", "store \"Two\" (s2)"}) {
    for (const std::string check : {"server", "gateway", "discovery document"})
      EXPECT_THAT(srctl.Output(), HasSubstr("ok: " + store + ", " + check + ": "));
  }
}
#endif

TEST_F(DoctorOfStores, NamesASchemeThatIsNeitherHttpNorHttps) {
  for (const std::string scheme : {"ftp://", "htps://", "://"}) {
    const SrctlRun run = Srctl({"doctor", scheme + "localhost:1/"});
    EXPECT_EQ(run.status, 1);
    ExpectProblem(Line(run, "server"),
                  "the address begins with " + scheme + ", which is neither https nor http.",
                  "Correct the address that you gave: https:// and the name of the server");
    EXPECT_THAT(Line(run, "discovery document"), StartsWith("note: "));
  }
  ExpectProblem(Line(Srctl({"doctor", "https://"}), "server"), "the address is no URL.",
                "Correct the address that you gave");
  EXPECT_THAT(Srctl({"doctor", "HTTPS://localhost:" + std::to_string(server_.Port())}).output,
              StartsWith("ok: server: "));
}

TEST_F(DoctorOfStores, LooksAtAnAddress) {
  const std::string url = NobodysAddress();
  const SrctlRun run = Srctl({"doctor", url});
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.output, StartsWith("problem: server: " + url + ": it cannot be contacted: "));
}

}  // namespace

#include "libs/Wayfinder/Probing/HostLookups.h"
#include "libs/Wayfinder/Probing/ProbeRound.h"
#include "support/LoopbackListener.h"
#include "support/RawServer.h"
#include "support/TrustedAuthority.h"
#include "support/WebServer.h"
#include "wayfinder/Responses.h"

#include <gmock/gmock.h>

#include <map>

using TestSupport::LoopbackListener;
using TestSupport::RawServer;
using TestSupport::Response;
using TestSupport::ServerBlock;
using TestSupport::TrustedAuthority;
using TestSupport::WebServer;
using Wayfinding::HostLookups;
using Wayfinding::ParseBeaconAddress;
using Wayfinding::ProbeAnswer;
using Wayfinding::ProbeOutcome;
using Wayfinding::ProbeRound;

namespace {

// Where the resolver of these cases finds its hosts.
std::vector<std::string> Resolve(const std::string& host) {
  if (host == "store.example" || host == "stores.example" || host == "xn--mnchen-3ya.example")
    return {"127.0.0.1"};
  if (host == "second.example") return {"127.0.0.2", "127.0.0.1"};
  if (host == "both.example") return {"::1", "127.0.0.1"};
  return {};
}

std::vector<ProbeOutcome> AskAll(const std::vector<std::string>& beacons) {
  HostLookups lookups(Resolve);
  std::vector<ProbeRound::Question> questions;
  for (const std::string& beacon : beacons)
    questions.push_back({.beacon = ParseBeaconAddress(beacon).value(), .stores = {0}});
  std::vector<ProbeOutcome> outcomes(beacons.size());
  ProbeRound round(
      questions, {"https://store"}, lookups,
      [&outcomes](std::size_t index, ProbeOutcome outcome) { outcomes[index] = std::move(outcome); });
  round.Advance();
  while (!round.IsFinished()) {
    round.Wait({}, std::chrono::seconds(20));
    round.Advance();
  }
  return outcomes;
}

ProbeOutcome Ask(const std::string& beacon) {
  return AskAll({beacon}).front();
}

std::string At(std::uint16_t port, const std::string& before = "http://127.0.0.1") {
  return before + ":" + std::to_string(port);
}

ProbeOutcome AskServerThatAnswers(const std::string& status, const std::string& headers = "") {
  const RawServer server({Response(status, headers)});
  return Ask(At(server.Port()) + "/beacon");
}

TEST(ProbeRound, AHandshakeForTheNameIsAnAnswer) {
  const WebServer server(TrustedAuthority().TlsServerBlock("good", "return 503;"));
  const ProbeOutcome outcome = Ask(server.Address("https") + "/internal");
  EXPECT_EQ(outcome.answer, ProbeAnswer::Answered) << outcome.reason.English();
  EXPECT_TRUE(outcome.proven);
  EXPECT_EQ(outcome.peer, "127.0.0.1");
}

TEST(ProbeRound, AnIntermediateAuthorityIsFollowed) {
  const WebServer server(TrustedAuthority().TlsServerBlock("chained"));
  EXPECT_EQ(Ask(server.Address("https")).answer, ProbeAnswer::Answered);
}

TEST(ProbeRound, ACertificateForAnotherNameIsSomebodyElse) {
  const WebServer server(TrustedAuthority().TlsServerBlock("wrong-host"));
  const ProbeOutcome outcome = Ask(server.Address("https"));
  EXPECT_EQ(outcome.answer, ProbeAnswer::SomebodyElse);
  EXPECT_EQ(outcome.reason.English(), server.Address("https") + "/: certificate for another name");
  EXPECT_EQ(outcome.peer, "127.0.0.1");
}

TEST(ProbeRound, TheNameIsThatOfTheBeaconWhereverItResolvesTo) {
  const WebServer server(TrustedAuthority().TlsServerBlock("wrong-host"));
  EXPECT_EQ(Ask(At(server.Port(), "https://stores.example")).answer, ProbeAnswer::Answered);
  EXPECT_EQ(Ask(At(server.Port(), "https://store.example")).answer, ProbeAnswer::SomebodyElse);
}

// At its first address nobody listens.
TEST(ProbeRound, ThePeerIsTheAddressThatWasConnected) {
  const WebServer server(TrustedAuthority().TlsServerBlock("wrong-host"));
  for (const char* host : {"https://second.example", "https://both.example"}) {
    const ProbeOutcome outcome = Ask(At(server.Port(), host));
    EXPECT_EQ(outcome.answer, ProbeAnswer::SomebodyElse) << host;
    EXPECT_EQ(outcome.peer, "127.0.0.1") << host;
    EXPECT_THAT(outcome.heardFrom, testing::ElementsAre("127.0.0.1")) << host;
  }
}

TEST(ProbeRound, ABrokenChainIsNoAnswerAndNeverAPortal) {
  for (const char* certificate : {"expired", "unknown-issuer"}) {
    const WebServer server(TrustedAuthority().TlsServerBlock(certificate));
    EXPECT_EQ(Ask(server.Address("https")).answer, ProbeAnswer::None) << certificate;
    EXPECT_EQ(Ask(At(server.Port(), "https://store.example")).answer, ProbeAnswer::None) << certificate;
  }
}

TEST(ProbeRound, APlainServerUnderASecureURLIsNoAnswer) {
  const WebServer server(ServerBlock("", ""));
  const ProbeOutcome outcome = Ask(server.Address("https"));
  EXPECT_EQ(outcome.answer, ProbeAnswer::None);
  EXPECT_THAT(outcome.heardFrom, testing::ElementsAre("127.0.0.1"));
}

TEST(ProbeRound, AnyPlainAnswerBelow500Counts) {
  for (const char* status : {"200 OK", "204 No Content", "304 Not Modified", "401 Unauthorized",
                             "404 Not Found", "405 Method Not Allowed"}) {
    const ProbeOutcome outcome = AskServerThatAnswers(status);
    EXPECT_EQ(outcome.answer, ProbeAnswer::Answered) << status << outcome.reason.English();
    EXPECT_FALSE(outcome.proven);
  }
}

TEST(ProbeRound, AServersTroubleIsNoAnswer) {
  for (const char* status : {"500 Internal Server Error", "502 Bad Gateway", "503 Service Unavailable"}) {
    EXPECT_EQ(AskServerThatAnswers(status).answer, ProbeAnswer::None) << status;
  }
}

TEST(ProbeRound, Status511IsSomebodyElse) {
  const ProbeOutcome outcome = AskServerThatAnswers("511 Network Authentication Required");
  EXPECT_EQ(outcome.answer, ProbeAnswer::SomebodyElse);
  EXPECT_THAT(outcome.reason.English(), testing::EndsWith(": status 511"));
}

TEST(ProbeRound, ARedirectToAnotherHostIsSomebodyElseAndIsNotFollowed) {
  const RawServer other({Response("200 OK")});
  const std::string target = At(other.Port(), "http://localhost") + "/login";
  for (const char* status : {"301 Moved", "302 Found", "303 See Other", "307 Temporary", "308 Permanent"}) {
    const ProbeOutcome outcome = AskServerThatAnswers(status, "Location: " + target + "\r\n");
    EXPECT_EQ(outcome.answer, ProbeAnswer::SomebodyElse) << status;
    EXPECT_THAT(outcome.reason.English(), testing::EndsWith(": redirect to localhost"));
  }
  EXPECT_TRUE(other.Requests().empty());
}

TEST(ProbeRound, ARedirectWithinTheHostIsAnAnswer) {
  for (const char* target : {"https://127.0.0.1/", "http://127.0.0.1:1/x", "/login", "other://127.0.0.1/"}) {
    EXPECT_EQ(AskServerThatAnswers("302 Found", std::string("Location: ") + target + "\r\n").answer,
              ProbeAnswer::Answered)
        << target;
  }
}

TEST(ProbeRound, ARedirectWhoseTargetCannotBeReadIsSomebodyElse) {
  for (const char* headers :
       {"Location: http://portal login.example/\r\n", "Location: http://\r\n", "Location: http://[::1/\r\n",
        "Location: mailto:portal@example\r\n", "Location: http://a:port/\r\n", ""}) {
    const ProbeOutcome outcome = AskServerThatAnswers("302 Found", headers);
    EXPECT_EQ(outcome.answer, ProbeAnswer::SomebodyElse) << headers;
    EXPECT_THAT(outcome.reason.English(), testing::EndsWith(": redirect to an address that cannot be read"));
  }
  EXPECT_EQ(AskServerThatAnswers("300 Multiple Choices", "Location: http://a b/\r\n").answer,
            ProbeAnswer::SomebodyElse);
  EXPECT_EQ(AskServerThatAnswers("300 Multiple Choices").answer, ProbeAnswer::Answered);
}

TEST(ProbeRound, AServerThatDoesNotKnowHEADIsAskedAgain) {
  const RawServer server({Response("501 Not Implemented"),
                          "HTTP/1.1 200 OK\r\nConnection: close\r\n\r\n" + std::string(1 << 20, 'x')});
  EXPECT_EQ(Ask(At(server.Port())).answer, ProbeAnswer::Answered);
  ASSERT_EQ(server.Requests().size(), 2U);
  EXPECT_THAT(server.Requests()[0], testing::StartsWith("HEAD / "));
  EXPECT_THAT(server.Requests()[1], testing::StartsWith("GET / "));
}

TEST(ProbeRound, ARedirectWithABodyIsSeenToo) {
  const RawServer server(
      {Response("501 Not Implemented"),
       "HTTP/1.1 302 Found\r\nLocation: //portal.example/login\r\n\r\n" + std::string(1 << 20, 'x')});
  const ProbeOutcome outcome = Ask(At(server.Port()));
  EXPECT_EQ(outcome.answer, ProbeAnswer::SomebodyElse);
  EXPECT_THAT(outcome.reason.English(), testing::EndsWith(": redirect to portal.example"));
}

TEST(ProbeRound, ARedirectWithinAnInternationalHostIsAnAnswer) {
  const RawServer server({Response("302 Found", "Location: http://m\xC3\xBCnchen.example/x\r\n")});
  const ProbeOutcome outcome = Ask(At(server.Port(), "http://m\xC3\xBCnchen.example"));
  EXPECT_EQ(outcome.answer, ProbeAnswer::Answered) << outcome.reason.English();
}

TEST(ProbeRound, AnOpenPortProvesNothing) {
  const LoopbackListener plain;
  const LoopbackListener secure;
  const auto outcomes =
      AskAll({At(plain.port), At(secure.port, "https://127.0.0.1"), At(plain.port, "localhost")});
  for (const ProbeOutcome& outcome : outcomes) EXPECT_EQ(outcome.answer, ProbeAnswer::None);
}

TEST(ProbeRound, WhatIsNotHTTPIsNoAnswer) {
  const RawServer server({"SSH-2.0-server\r\n"});
  EXPECT_EQ(Ask(At(server.Port())).answer, ProbeAnswer::None);
}

TEST(ProbeRound, AHeadWithoutEndIsNoAnswer) {
  std::string flood = "HTTP/1.1 200 OK\r\n";
  for (int i = 0; i < 40'000; ++i) flood += "X-Filler: " + std::string(50, 'x') + "\r\n";
  const RawServer server({flood});
  EXPECT_EQ(Ask(At(server.Port())).answer, ProbeAnswer::None);
}

TEST(ProbeRound, ARefusedConnectionIsNoAnswer) {
  std::uint16_t port = 0;
  {
    const LoopbackListener closed;
    port = closed.port;
  }
  const ProbeOutcome outcome = Ask(At(port));
  EXPECT_EQ(outcome.answer, ProbeAnswer::None);
  EXPECT_FALSE(outcome.reason.IsEmpty());
}

TEST(ProbeRound, AnUnknownNameIsNoAnswer) {
  EXPECT_EQ(Ask("https://missing.example").reason.English(), "missing.example: name not found");
}

TEST(ProbeRound, AHostWithADotAtItsEndIsTheSameHost) {
  const RawServer server({Response("200 OK")});
  const ProbeOutcome outcome = Ask(At(server.Port(), "http://store.example."));
  EXPECT_EQ(outcome.answer, ProbeAnswer::Answered) << outcome.reason.English();
}

TEST(ProbeRound, NamesOfThisMachineNeedNoLookup) {
  const RawServer server({Response("200 OK")});
  for (const char* host : {"http://localhost", "http://localhost.", "http://stores.localhost."}) {
    const ProbeOutcome outcome = Ask(At(server.Port(), host));
    EXPECT_EQ(outcome.answer, ProbeAnswer::Answered) << outcome.reason.English();
  }
}

TEST(ProbeRound, AHostIsAskedSecurelyAndThenPlainly) {
  const WebServer secure(TrustedAuthority().TlsServerBlock("good"));
  EXPECT_TRUE(Ask(At(secure.Port(), "localhost")).proven);
  const WebServer plain(ServerBlock("", "return 404;"));
  const ProbeOutcome outcome = Ask(At(plain.Port(), "localhost"));
  EXPECT_EQ(outcome.answer, ProbeAnswer::Answered) << outcome.reason.English();
  EXPECT_FALSE(outcome.proven);
}

TEST(ProbeRound, AHostWithACertificateForAnotherNameIsNotAskedPlainly) {
  const WebServer server(TrustedAuthority().TlsServerBlock("wrong-host"));
  EXPECT_EQ(Ask(At(server.Port(), "localhost")).answer, ProbeAnswer::SomebodyElse);
}

TEST(ProbeRound, NoProxyAnswersForABeacon) {
  const RawServer proxy({Response("200 OK")});
  ::setenv("http_proxy", At(proxy.Port()).c_str(), 1);
  ::setenv("all_proxy", At(proxy.Port()).c_str(), 1);
  const ProbeOutcome outcome = Ask("http://127.0.0.1:1/");
  ::unsetenv("http_proxy");
  ::unsetenv("all_proxy");
  EXPECT_EQ(outcome.answer, ProbeAnswer::None);
  EXPECT_TRUE(proxy.Requests().empty());
}

TEST(ProbeRound, ManyBeaconsAllGetTheirTurn) {
  const WebServer server(ServerBlock("", ""));
  std::vector<std::string> beacons;
  for (int i = 0; i < 100; ++i) beacons.push_back(server.Address("http") + "/" + std::to_string(i));
  for (const ProbeOutcome& outcome : AskAll(beacons))
    EXPECT_EQ(outcome.answer, ProbeAnswer::Answered) << outcome.reason.English();
}

}  // namespace

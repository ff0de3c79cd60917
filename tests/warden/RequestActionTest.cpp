#include "warden/RequestActionTest.h"

#include "libs/Text/TextHelpers.h"

#include <gmock/gmock.h>

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;
using TestSupport::TestRoute;
using TestSupport::WardenRequest;

TEST_F(RequestActionTest, TheFirstPassSendsTheStoresUrlWithoutCredentials) {
  WardenRequest request(library_, kStore);
  EXPECT_EQ(request.Prepare(), MORVANE_WARDEN_ACTION_SEND);
  EXPECT_EQ(request.Url(), kStore);
  EXPECT_THAT(request.Headers(), IsEmpty());
  EXPECT_THAT(program_.Requests(), IsEmpty());
}

TEST_F(RequestActionTest, AnAnsweredRequestIsDone) {
  WardenRequest request(library_, kStore);
  EXPECT_EQ(request.Prepare(), MORVANE_WARDEN_ACTION_SEND);
  request.Report(200);
  EXPECT_EQ(request.Prepare(), static_cast<std::uint32_t>(MORVANE_WARDEN_ACTION_DONE));
}

TEST_F(RequestActionTest, GatewayModesOneAndTwoRewriteTheUrl) {
  for (const std::uint32_t mode : {1U, 2U}) {
    WardenRequest request(library_, kStore);
    EXPECT_EQ(request.ForceRoute({L"https://gateway.example/", 1, mode}), MORVANE_WARDEN_OK);
    EXPECT_EQ(request.Prepare(), MORVANE_WARDEN_ACTION_SEND);
    EXPECT_EQ(request.Url(), L"https://gateway.example/https/store.example:8443/Example/Main");
  }
}

TEST_F(RequestActionTest, AGatewayIsAskedByTheSchemeThatIsShown) {
  for (const wchar_t* gateway : {L"gateway.example/", L"ftp://gateway.example", L"http://gateway.example:"}) {
    WardenRequest request(library_, kStore);
    EXPECT_EQ(request.ForceRoute({gateway, 1, 2}), MORVANE_WARDEN_OK);
    EXPECT_EQ(request.Prepare(), MORVANE_WARDEN_ACTION_SEND);
    EXPECT_EQ(request.Url(), L"http://gateway.example/https/store.example:8443/Example/Main");
  }
}

TEST_F(RequestActionTest, GatewayModesNoughtAndThreeLeaveTheUrl) {
  for (const std::uint32_t mode : {0U, 3U}) {
    WardenRequest request(library_, kStore);
    EXPECT_EQ(request.ForceRoute({L"https://gateway.example", 1, mode}), MORVANE_WARDEN_OK);
    EXPECT_EQ(request.Prepare(), MORVANE_WARDEN_ACTION_SEND);
    EXPECT_EQ(request.Url(), kStore);
  }
}

TEST_F(RequestActionTest, NothingIsSentPastAGatewayThatMakesNoSense) {
  for (const TestRoute& route : {TestRoute{L"https://me@gateway.example", 1, 2}, TestRoute{L"", 1, 2},
                                 TestRoute{L"https://gateway.example", 6, 2}, TestRoute{L"gateway", 1, 4}}) {
    WardenRequest request(library_, kStore);
    EXPECT_EQ(request.ForceRoute(route), MORVANE_WARDEN_BAD_PARAMETER);
    EXPECT_EQ(request.Prepare(), static_cast<std::uint32_t>(MORVANE_WARDEN_ACTION_BAD_PARAMETER));
  }
}

TEST_F(RequestActionTest, AChallengeIsAnsweredWithTheCredential) {
  program_.WillGive("user", "secret");
  WardenRequest request(library_, kStore);
  PrepareAnswerTo(kBasic, request);
  EXPECT_THAT(request.Headers(), ElementsAre(kSecretHeader));
  EXPECT_THAT(program_.Requests(),
              ElementsAre("get\nprotocol=https\nhost=store.example:8443\nrealm=Stores\nplace=store\n"
                          "authentication=none\nrejected=no\n"));
}

TEST_F(RequestActionTest, AProxyThatAsksForALogOnEndsTheRequestWithoutACredential) {
  program_.WillGive("user", "secret", "source=stored");
  for (const wchar_t* url : {kStore, L"http://store.example/"}) {
    WardenRequest request(library_, url);
    EXPECT_EQ(request.Prepare(), MORVANE_WARDEN_ACTION_SEND);
    request.Report(407, {L"Proxy-Authenticate: Basic realm=\"Proxy\"", kBasic});
    EXPECT_EQ(request.Prepare(), static_cast<std::uint32_t>(MORVANE_WARDEN_ACTION_REFUSED));
    EXPECT_EQ(request.Prepare(), static_cast<std::uint32_t>(MORVANE_WARDEN_ACTION_REFUSED));
  }
  EXPECT_THAT(program_.Requests(), IsEmpty());
  EXPECT_THAT(library_.Log(), Contains(StartsWith("2 Warden: a proxy asks for a log-on")));
}

TEST_F(RequestActionTest, AProxyThatAsksForALogOnSaysNothingAboutTheServersCredential) {
  program_.WillGive("user", "secret", "source=stored");
  WardenRequest request(library_, kStore);
  PrepareAnswerTo(kBasic, request);
  request.Report(407, {L"Proxy-Authenticate: Basic realm=\"Stores\"", kBasic});
  EXPECT_EQ(request.Prepare(), static_cast<std::uint32_t>(MORVANE_WARDEN_ACTION_REFUSED));
  EXPECT_THAT(program_.Actions(), ElementsAre("get"));
}

TEST_F(RequestActionTest, AChallengeOfAnotherServerSaysNothingAboutTheCredentialAndEndsTheRequest) {
  for (const char* other : {"https://other.example", "http://store.example:8443", "https://store.example"}) {
    program_.WillGive("user", "secret", "source=stored");
    WardenRequest request(library_, kStore);
    PrepareAnswerTo(kBasic, request);
    EXPECT_EQ(request.SetAnsweringUrl(util::widen(other) + L"/x?password=hidden"), MORVANE_WARDEN_OK);
    request.Report(401, {kBasic});
    EXPECT_EQ(request.Prepare(), static_cast<std::uint32_t>(MORVANE_WARDEN_ACTION_REFUSED));
    EXPECT_THAT(library_.Log(), Contains("2 Warden: the challenge is another server's: "
                                         "https://store.example:8443 was asked, " +
                                         std::string(other) + " answers"));
  }
  EXPECT_THAT(program_.Actions(), ElementsAre("get", "get", "get"));
  EXPECT_THAT(AllLogLines(), Not(HasSubstr("hidden")));
}

TEST_F(RequestActionTest, AChallengeBehindARedirectIsAnsweredWhereItCameFrom) {
  program_.WillGive("user", "secret");
  WardenRequest request(library_, kStore);
  EXPECT_EQ(request.Prepare(), MORVANE_WARDEN_ACTION_SEND);
  EXPECT_EQ(request.SetAnsweringUrl(L"https://STORE.example:8443/new?a=b"), MORVANE_WARDEN_OK);
  request.Report(401, {kDigest});
  EXPECT_EQ(request.Prepare(), MORVANE_WARDEN_ACTION_SEND);
  EXPECT_EQ(request.Url(), L"https://store.example:8443/new?a=b");
  EXPECT_THAT(request.Headers(), ElementsAre(HasSubstr(L"uri=\"/new?a=b\"")));
}

TEST_F(RequestActionTest, ADigestThatWasTakenToAnotherTargetIsNotJudged) {
  program_.WillGive("user", "secret", "source=stored");
  WardenRequest request(library_, kStore);
  EXPECT_EQ(request.Prepare(), MORVANE_WARDEN_ACTION_SEND);
  request.Report(401, {kDigest});
  std::wstring target = L"/Example/Main";
  for (const auto& [status, redirectedTo] : {std::pair{401, L"/new"}, std::pair{400, L"/newer"}}) {
    EXPECT_EQ(request.Prepare(), MORVANE_WARDEN_ACTION_SEND);
    EXPECT_THAT(request.Headers(), ElementsAre(HasSubstr(L"uri=\"" + target + L"\"")));
    target = redirectedTo;
    EXPECT_EQ(request.SetAnsweringUrl(L"https://store.example:8443" + target), MORVANE_WARDEN_OK);
    request.Report(status, {kDigest});
  }
  EXPECT_EQ(request.Prepare(), MORVANE_WARDEN_ACTION_SEND);
  EXPECT_THAT(request.Headers(), ElementsAre(HasSubstr(L"uri=\"/newer\"")));
  EXPECT_THAT(program_.Actions(), ElementsAre("get"));

  request.Report(401, {kDigest});
  static_cast<void>(request.Prepare());
  EXPECT_THAT(program_.Actions(), ElementsAre("get", "erase", "get"));
}

TEST_F(RequestActionTest, APasswordThatWasTakenToAnotherTargetIsJudged) {
  program_.WillGive("user", "secret", "source=stored");
  WardenRequest request(library_, kStore);
  PrepareAnswerTo(kBasic, request);
  EXPECT_EQ(request.SetAnsweringUrl(L"https://store.example:8443/new"), MORVANE_WARDEN_OK);
  request.Report(401, {kBasic});
  EXPECT_THAT(program_.Actions(), ElementsAre("get", "erase"));
}

TEST_F(RequestActionTest, AnAnswerComesFromAWebAddressAndToAPreparedRequest) {
  WardenRequest request(library_, kStore);
  EXPECT_EQ(request.SetAnsweringUrl(kStore), MORVANE_WARDEN_NOTHING_PREPARED);
  EXPECT_EQ(request.Prepare(), MORVANE_WARDEN_ACTION_SEND);
  EXPECT_EQ(request.SetAnsweringUrl(L"file:///etc"), MORVANE_WARDEN_BAD_PARAMETER);
}

TEST_F(RequestActionTest, AChallengeOfAnAddressThatCannotBeReadEndsTheRequest) {
  program_.WillGive("user", "secret", "source=stored");
  WardenRequest request(library_, kStore);
  PrepareAnswerTo(kBasic, request);
  EXPECT_EQ(request.SetAnsweringUrl(L"https://store.example:bad/"), MORVANE_WARDEN_BAD_PARAMETER);
  request.Report(401, {kBasic});
  EXPECT_EQ(request.Prepare(), static_cast<std::uint32_t>(MORVANE_WARDEN_ACTION_REFUSED));
  EXPECT_THAT(program_.Actions(), ElementsAre("get"));
}

TEST_F(RequestActionTest, NoCredentialIsUsedWithoutTls) {
  const std::uint32_t unsupported = MORVANE_WARDEN_ACTION_UNSUPPORTED_SCHEME;
  program_.WillGive("user", "secret", "source=stored");
  for (const wchar_t* challenge : {kBasic, kDigest}) {
    EXPECT_EQ(ActionAfter401({challenge}, L"http://store.example/"), unsupported);
    EXPECT_EQ(ActionAfter401({challenge}, L"http://store.example:443/https://"), unsupported);
    WardenRequest request(library_, kStore);
    ASSERT_EQ(request.ForceRoute({L"http://gateway.example"}), MORVANE_WARDEN_OK);
    EXPECT_EQ(request.Prepare(), MORVANE_WARDEN_ACTION_SEND);
    request.Report(401, {challenge});
    EXPECT_EQ(request.Prepare(), unsupported);
  }
  EXPECT_THAT(program_.Requests(), IsEmpty());
  EXPECT_THAT(library_.Log(), Contains("2 Warden: no challenge is answered without TLS"));
}

TEST_F(RequestActionTest, AGatewayBehindTlsGetsACredentialForAStoreWithoutIt) {
  program_.WillGive("user", "secret");
  WardenRequest request(library_, L"http://store.example/");
  ASSERT_EQ(request.ForceRoute({L"https://gateway.example"}), MORVANE_WARDEN_OK);
  PrepareAnswerTo(kBasic, request);
  EXPECT_THAT(request.Headers(), ElementsAre(kSecretHeader));
}

TEST_F(RequestActionTest, AnUnknownSchemeEndsTheRequest) {
  const std::uint32_t unsupported = MORVANE_WARDEN_ACTION_UNSUPPORTED_SCHEME;
  EXPECT_EQ(ActionAfter401({L"WWW-Authenticate: Bearer realm=\"x\""}), unsupported);
  EXPECT_EQ(ActionAfter401({L"WWW-Authenticate: Digest realm=\"x\", nonce=\"n\", qop=\"auth-int\""}),
            unsupported);
  EXPECT_EQ(ActionAfter401({}), unsupported);
}

TEST_F(RequestActionTest, OtherAnswersEndTheRequest) {
  for (const std::int64_t status : {204, 302, 400, 403, 404, 500}) {
    WardenRequest request(library_, kStore);
    EXPECT_EQ(request.Prepare(), MORVANE_WARDEN_ACTION_SEND);
    request.Report(status, {kBasic});
    EXPECT_EQ(request.Prepare(), static_cast<std::uint32_t>(MORVANE_WARDEN_ACTION_REFUSED)) << status;
  }
  WardenRequest request(library_, kStore);
  EXPECT_EQ(request.Prepare(), MORVANE_WARDEN_ACTION_SEND);
  request.Report(0);
  EXPECT_EQ(request.Prepare(), static_cast<std::uint32_t>(MORVANE_WARDEN_ACTION_NO_ANSWER));
}

TEST_F(RequestActionTest, TheStrongestSchemeIsTaken) {
  const std::wstring md5 = L"Digest realm=\"D\", nonce=\"n\", qop=\"auth\", algorithm=MD5";
  const std::wstring sha256 = L"Digest realm=\"D\", nonce=\"n\", qop=\"auth\", algorithm=SHA-256";
  program_.WillGive("user", "secret");
  program_.WillGive("user", "secret");
  for (const auto& [lines, expected] :
       {std::pair{
            std::vector<std::wstring>{kBasic, L"WWW-Authenticate: " + md5, L"WWW-Authenticate: " + sha256},
            L"algorithm=SHA-256"},
        std::pair{std::vector<std::wstring>{L"WWW-Authenticate: Basic realm=x, " + md5 + L", Bearer"},
                  L"algorithm=MD5"}}) {
    WardenRequest request(library_, kStore);
    EXPECT_EQ(request.Prepare(), MORVANE_WARDEN_ACTION_SEND);
    request.Report(401, lines);
    EXPECT_EQ(request.Prepare(), MORVANE_WARDEN_ACTION_SEND);
    EXPECT_THAT(request.Headers(), ElementsAre(HasSubstr(expected)));
  }
}

TEST_F(RequestActionTest, AStaleNonceIsAnsweredWithoutAskingOrCountingATry) {
  program_.WillGive("user", "secret");
  WardenRequest request(library_, kStore);
  EXPECT_EQ(request.Prepare(), MORVANE_WARDEN_ACTION_SEND);
  const std::wstring challenge = L"WWW-Authenticate: Digest realm=\"r\", qop=\"auth\", nonce=";
  request.Report(401, {challenge + L"\"n0\""});
  for (int pass = 0; pass < 5; ++pass) {
    EXPECT_EQ(request.Prepare(), MORVANE_WARDEN_ACTION_SEND);
    EXPECT_THAT(request.Headers(), ElementsAre(HasSubstr(L"nonce=\"n" + std::to_wstring(pass) + L"\"")));
    request.Report(401, {challenge + L"\"n" + std::to_wstring(pass + 1) + L"\", stale=true"});
  }
  EXPECT_EQ(program_.Requests().size(), 1U);
}

TEST_F(RequestActionTest, AServerThatIsNeverContentComesToAnEnd) {
  program_.WillGive("user", "secret");
  WardenRequest request(library_, kStore);
  std::uint32_t action = request.Prepare();
  int passes = 0;
  for (; action == MORVANE_WARDEN_ACTION_SEND && passes < 100; ++passes) {
    request.Report(401, {L"WWW-Authenticate: Digest realm=\"r\", qop=\"auth\", nonce=\"n\", stale=true"});
    action = request.Prepare();
  }
  EXPECT_EQ(action, static_cast<std::uint32_t>(MORVANE_WARDEN_ACTION_TOO_MANY_TRIES));
  EXPECT_LT(passes, 20);
}

TEST_F(RequestActionTest, ANonceThatIsUsedAgainIsCounted) {
  program_.WillGive("user", "secret");
  program_.WillGive("user", "better");
  WardenRequest request(library_, kStore);
  EXPECT_EQ(request.Prepare(), MORVANE_WARDEN_ACTION_SEND);
  const std::wstring challenge = L"WWW-Authenticate: Digest realm=\"r\", qop=\"auth\", nonce=\"n\"";
  for (const wchar_t* count : {L"nc=00000001", L"nc=00000002"}) {
    request.Report(401, {challenge});
    EXPECT_EQ(request.Prepare(), MORVANE_WARDEN_ACTION_SEND);
    EXPECT_THAT(request.Headers(), ElementsAre(HasSubstr(count)));
  }
}

TEST_F(RequestActionTest, HostileLinesReachNoOtherRequest) {
  program_.WillGive("user", "secret");
  WardenRequest request(library_, kStore);
  EXPECT_EQ(request.Prepare(), MORVANE_WARDEN_ACTION_SEND);
  request.Report(401, {L"WWW-Authenticate: Digest realm=\"a\r\nX-Evil: 1\", nonce=\"n\"",
                       L"WWW-Authenticate: Digest realm=\"b\nX-Evil: 1\", nonce=\"n\"",
                       L"WWW-Authenticate: Digest realm=\"" + std::wstring(65536, L'x') + L"\", nonce=\"n\"",
                       L"X-Evil", kBasic});
  EXPECT_EQ(request.Prepare(), MORVANE_WARDEN_ACTION_SEND);
  EXPECT_THAT(request.Headers(), ElementsAre(kSecretHeader));
}

TEST_F(RequestActionTest, CancellingIsForGood) {
  {
    WardenRequest request(library_, kStore);
    library_.CancelRequests();
    EXPECT_EQ(request.Prepare(), 8U);
    EXPECT_EQ(request.Prepare(), 8U);
    WardenRequest overlapping(library_, kStore);
    EXPECT_EQ(overlapping.Prepare(), 8U);
    EXPECT_EQ(request.Prepare(), 8U);
  }
  WardenRequest next(library_, kStore);
  EXPECT_EQ(next.Prepare(), 8U);
}

}  // namespace

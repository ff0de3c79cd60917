#include "SRLib/Provider/Opening.h"
#include "SRLib/SRTrustedHTTPRequest.h"
#include "core/CoreTest.h"
#include "fakes/FakeWarden.h"
#include "fakes/StubHTTPRequestFactory.h"

#include <gmock/gmock.h>

#include <string>

namespace {

using namespace ServiceRecords;
using namespace TestSupport;
using ::testing::StartsWith;

class SRTrustedHTTPRequestTest : public CoreTest {
 protected:
  bool MakeRequest() {
    return SRTrustedHTTPRequest(server_, FakeWarden::Functions()).MakeRequest(data_, response_, canceled_);
  }

  Texts Traced() { return trace_.TextsFrom(kTrustedRequestFile); }

  FakeWarden warden_;
  StubHTTPRequestFactory server_;
  SRWardenRequest_Data data_{L"https://store.example/discovery", {}};
  std::wstring response_ = L"left over";
  bool canceled_ = true;
};

TEST_F(SRTrustedHTTPRequestTest, AnAnsweredRequestTakesTheLibraryThroughItsLifeInOrder) {
  warden_.Send(L"https://store.example/discovery");
  server_.Answer(L"https://store.example/discovery", L"<Discovery/>");
  EXPECT_TRUE(MakeRequest());
  EXPECT_EQ(response_, L"<Discovery/>");
  EXPECT_FALSE(canceled_);
  EXPECT_EQ(warden_.Calls(), (Texts{"Initialize", "CreateConnection 'ServiceRecord Trust' 0 0",
                                    "CreateRequestContext 'https://store.example/discovery' 3",
                                    "SetQuestions '' -1 -1", "Prepare2", "GetTranslatedUrl", "GetHeaders",
                                    "ReportHttpResponse 200", "FreeTranslatedUrl", "FreeHeaders",
                                    "DestroyContext", "DestroyConnection", "Uninitialize"}));
}

TEST_F(SRTrustedHTTPRequestTest, ARouteIsForcedAsOneUnitBeforeTheFirstPassWhenAGatewayLocationIsPresent) {
  data_.Route = {L"gw", L"https://gw.example", 2, 3, 1};
  EXPECT_FALSE(MakeRequest());
  EXPECT_EQ(warden_.Calls(),
            (Texts{"Initialize", "CreateConnection 'ServiceRecord Trust' 0 0",
                   "CreateRequestContext 'https://store.example/discovery' 3", "SetQuestions '' -1 -1",
                   "ForceRoute 'gw' 'https://gw.example' edition 2 authentication 3 mode 1", "Prepare2",
                   "DestroyContext", "DestroyConnection", "Uninitialize"}));
}

TEST_F(SRTrustedHTTPRequestTest, TheUserIsAskedForTheStoreWhereTheOpeningAsks) {
  data_.StoreName = L"Sales";
  Opening opening({.id = 1,
                   .path = "",
                   .terminalDescriptor = 77,
                   .desktop = {"DISPLAY=:7", "LANG=de"},
                   .withdrawalDescriptor = 78});
  const Opening::Handling handling(opening);
  EXPECT_FALSE(MakeRequest());
  EXPECT_THAT(warden_.Calls(), ::testing::Contains("SetQuestions 'Sales' 77 78 DISPLAY=:7 LANG=de"));
}

TEST_F(SRTrustedHTTPRequestTest, AGatewayNameAloneForcesNoRoute) {
  data_.Route.GatewayName = L"gw";
  EXPECT_FALSE(MakeRequest());
  EXPECT_THAT(warden_.Calls(), ::testing::Not(::testing::Contains(StartsWith("ForceRoute"))));
}

TEST_F(SRTrustedHTTPRequestTest, TheTranslatedUrlIsAskedWithTheContentTypeBeforeTheLibrarysLines) {
  warden_.Send(L"https://gw.example/https/store.example/discovery", {L"Authorization: Basic eA==", L"X: 1"});
  EXPECT_FALSE(MakeRequest());
  EXPECT_EQ(server_.Sent(),
            (std::vector<SentRequest>{{L"https://gw.example/https/store.example/discovery",
                                       L"Content-Type: text/xml\r\nAuthorization: Basic eA==\r\nX: 1\r\n"}}));
}

TEST_F(SRTrustedHTTPRequestTest, AChallengeIsReportedLineByLineAndTheNextRequestIsSent) {
  warden_.Send(L"https://s/", {});
  warden_.Send(L"https://s/", {L"Authorization: Basic eA=="});
  server_.Answer(L"https://s/", {401, L"", L"WWW-Authenticate: Basic realm=\"r\"\r\nServer: x\r\n"});
  server_.Answer(L"https://s/", L"<Discovery/>");
  EXPECT_TRUE(MakeRequest());
  EXPECT_EQ(response_, L"<Discovery/>");
  EXPECT_EQ(warden_.PassCalls(),
            (Texts{"Prepare2", "GetTranslatedUrl", "GetHeaders",
                   R"(ReportHttpResponse 401 'WWW-Authenticate: Basic realm="r"' 'Server: x')",
                   "FreeTranslatedUrl", "FreeHeaders", "Prepare2", "GetTranslatedUrl", "GetHeaders",
                   "ReportHttpResponse 200", "FreeTranslatedUrl", "FreeHeaders"}));
}

TEST_F(SRTrustedHTTPRequestTest, AnAnswerBehindARedirectIsReportedWithItsUrl) {
  warden_.Send(L"https://s/old");
  server_.Answer(L"https://s/old", {401, L"", L"Server: x\r\n", L"https://s/new"});
  EXPECT_FALSE(MakeRequest());
  EXPECT_EQ(warden_.PassCalls(),
            (Texts{"Prepare2", "GetTranslatedUrl", "GetHeaders", "SetAnsweringUrl 'https://s/new'",
                   "ReportHttpResponse 401 'Server: x'", "FreeTranslatedUrl", "FreeHeaders", "Prepare2"}));
}

TEST_F(SRTrustedHTTPRequestTest, AnAnswerWhoseTextCannotBeReadIsAnEmptyOne) {
  warden_.Send(L"https://s/");
  server_.Answer(L"https://s/", {200, L"", L"Server: x\r\n"});
  EXPECT_TRUE(MakeRequest());
  EXPECT_TRUE(response_.empty());
}

TEST_F(SRTrustedHTTPRequestTest, ARawHeaderWithoutALineEndIsTracedAndReportedAsNoLines) {
  warden_.Send(L"https://s/");
  server_.Answer(L"https://s/", {500, L"", L"Server: x\r\nBroken: off"});
  EXPECT_FALSE(MakeRequest());
  EXPECT_THAT(warden_.PassCalls(), ::testing::Contains("ReportHttpResponse 500"));
  EXPECT_EQ(trace_.RecordsStartingWith("Error"),
            (Records{{2, kTrustedRequestFile, "Error extracting headers from https://s/"}}));
}

TEST_F(SRTrustedHTTPRequestTest, ACancellationBeforeTheFirstRequestSendsNothing) {
  canceled_ = false;
  warden_.EndWith(8);
  EXPECT_FALSE(MakeRequest());
  EXPECT_TRUE(canceled_);
  EXPECT_TRUE(response_.empty());
  EXPECT_TRUE(server_.Sent().empty());
  EXPECT_EQ(warden_.Calls().back(), "Uninitialize");
}

TEST_F(SRTrustedHTTPRequestTest, AnotherActionThanSendIsAFailureAlsoAfterAnEarlierPass) {
  warden_.Send(L"https://s/");
  warden_.EndWith(6);
  server_.Answer(L"https://s/", {404, L"", L"Server: x\r\n"});
  EXPECT_FALSE(MakeRequest());
  EXPECT_FALSE(canceled_);
  EXPECT_TRUE(response_.empty());
}

TEST_F(SRTrustedHTTPRequestTest, ARequestIsFramedByItsSignatureAndAnEndByTheLibraryNamesTheAction) {
  warden_.EndWith(8);
  EXPECT_FALSE(MakeRequest());
  const Records records = trace_.Records();
  ASSERT_EQ(records.size(), 3U);
  const std::string signature =
      "static bool ServiceRecords::SRTrustedHTTPRequest::MakeRequest(const "
      "ServiceRecords::SRWardenRequest_Data&, std::wstring&, bool&)";
  EXPECT_EQ(records[0], (TraceRecord{0, kTrustedRequestFile, "[+] " + signature}));
  EXPECT_EQ(records[1], (TraceRecord{2, kTrustedRequestFile,
                                     "[*] " + signature + ": MorvaneWarden_Prepare2 returned error 8"}));
  EXPECT_EQ(records[2], (TraceRecord{0, kTrustedRequestFile, "[-] " + signature}));
}

TEST_F(SRTrustedHTTPRequestTest, ASuccessTracesItsBeginAndEndOnly) {
  warden_.Send(L"https://s/");
  server_.Answer(L"https://s/", L"x");
  EXPECT_TRUE(MakeRequest());
  const Texts traced = Traced();
  ASSERT_EQ(traced.size(), 2U);
  EXPECT_THAT(traced[0], StartsWith("[+] "));
  EXPECT_THAT(traced[1], StartsWith("[-] "));
}

}  // namespace

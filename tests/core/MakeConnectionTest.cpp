#include "core/ProviderTest.h"

namespace {

using namespace ServiceRecords;
using namespace TestSupport;
using ::testing::Contains;
using ::testing::Not;
using ::testing::StartsWith;
using Edition = SRGateway::GatewayEdition;
using Authentication = SRGateway::GatewayAuthentication;
using AGMode = SRGateway::AGMode;

const std::wstring kURL = L"https://s.example/store/discovery";

class MakeConnectionTest : public ProviderTest {
 protected:
  bool Connect(SRStore store) { return provider_.MakeConnection(store, response_, canceled_); }

  Texts Traced() { return trace_.TextsFrom(kProviderFile); }

  // The mode handed to the authentication manager for such a gateway.
  std::string ForcedRoute(Edition edition, AGMode mode,
                          Authentication authentication = Authentication::None) {
    SRGateway gateway = Gateway(L"gw", L"https://gw.example");
    gateway.SetEdition(edition);
    gateway.SetAGMode(mode);
    gateway.SetAuthentication(authentication);
    const FakeWarden warden;
    Connect(Store(L"s", kURL, {gateway}));
    for (const std::string& call : warden.Calls()) {
      if (call.starts_with("ForceRoute ")) return call.substr(11);
    }
    return "none";
  }

  std::wstring response_;
  bool canceled_ = false;
};

TEST_F(MakeConnectionTest, ALocationThatStaysUndecidedIsAskedFor120SecondsAndThenGivenUpWithoutARequest) {
  location_.AnswerWith(0);
  EXPECT_FALSE(Connect(Store(L"s", kURL)));
  EXPECT_EQ(clock_.Seconds(), 120);
  EXPECT_TRUE(server_.Sent().empty());
  EXPECT_EQ(trace_.Records(),
            (Records{{0, kProviderFile,
                      "MakeConnection: Not requesting headers because network location is: deciding. "}}));
}

TEST_F(MakeConnectionTest, ALocationDecidedInTheLastSecondIsStillUsed) {
  location_.AnswerWith(0);
  clock_.OnSecond([this](int second) {
    if (second == 120) location_.AnswerWith(1);
    return true;
  });
  server_.Answer(kURL, L"<Discovery/>");
  EXPECT_TRUE(Connect(Store(L"s", kURL)));
  EXPECT_EQ(clock_.Seconds(), 120);
}

TEST_F(MakeConnectionTest, TheWaitEndsWithTheProcess) {
  location_.AnswerWith(0);
  clock_.OnSecond([](int second) { return second < 3; });
  EXPECT_FALSE(Connect(Store(L"s", kURL)));
  EXPECT_EQ(clock_.Seconds(), 3);
  EXPECT_TRUE(Traced().empty());
}

TEST_F(MakeConnectionTest, LocationNoneMakesNoRequest) {
  location_.AnswerWith(3);
  EXPECT_FALSE(Connect(Store(L"s", kURL)));
  EXPECT_TRUE(server_.Sent().empty());
  EXPECT_EQ(trace_.Records(),
            (Records{{0, kProviderFile,
                      "MakeConnection: No point in attempting to request headers from DS, because network "
                      "location is: 3"}}));
}

TEST_F(MakeConnectionTest, InsideAndOnVpnTheStoreIsAskedDirectlyWithoutExtraHeaders) {
  for (const std::uint32_t location : {1U, 4U}) {
    trace_.Clear();
    location_.AnswerWith(location);
    server_.Answer(kURL, L"answer");
    EXPECT_TRUE(Connect(Store(L"s", kURL, {Gateway(L"gw", L"https://gw.example", true)})));
    EXPECT_EQ(response_, L"answer");
    EXPECT_EQ(trace_.RecordsStartingWith("MakeConnection"),
              (Records{{0, kProviderFile,
                        "MakeConnection: direct to the store s, because network location is: " +
                            std::to_string(location)}}));
  }
  EXPECT_EQ(server_.Sent(), (std::vector<SentRequest>{{kURL, L""}, {kURL, L""}}));
  EXPECT_EQ(clock_.Seconds(), 0);
}

TEST_F(MakeConnectionTest, ADirectRequestThatFailsLeavesResponseAndCancellationAsTheyWere) {
  location_.AnswerWith(1);
  canceled_ = true;
  response_ = L"before";
  server_.Answer(kURL, {500, L"", L""});
  EXPECT_FALSE(Connect(Store(L"s", kURL)));
  EXPECT_TRUE(canceled_);
  EXPECT_EQ(response_, L"before");
}

TEST_F(MakeConnectionTest, EveryOtherLocationGoesThroughTheAuthenticationManager) {
  for (const std::uint32_t location : {2U, 5U, 6U, 7U}) {
    trace_.Clear();
    location_.AnswerWith(location);
    FakeWarden warden;
    warden.Send(L"https://gw.example/https/s.example/store/discovery");
    server_.Answer(L"https://gw.example/https/s.example/store/discovery", L"through");
    EXPECT_TRUE(Connect(Store(L"s", kURL, {Gateway(L"gw", L"https://gw.example", true)})));
    EXPECT_EQ(response_, L"through");
    EXPECT_EQ(trace_.RecordsStartingWith("MakeConnection"),
              (Records{{0, kProviderFile,
                        "MakeConnection: using Warden for the store s, because network location is: " +
                            std::to_string(location)}}));
    EXPECT_THAT(warden.Calls(), Contains("CreateRequestContext '" + Narrow(kURL) + "' 3"));
  }
}

TEST_F(MakeConnectionTest, TheDefaultGatewayIsTheRoute) {
  const FakeWarden warden;
  Connect(Store(L"s", kURL, {Gateway(L"a", L"https://a"), Gateway(L"b", L"https://b", true)}));
  EXPECT_THAT(warden.Calls(), Contains(StartsWith("ForceRoute 'b' 'https://b'")));
  EXPECT_THAT(warden.Calls(), Contains(StartsWith("SetQuestions 'Name of s'")));
}

TEST_F(MakeConnectionTest, AStoreWithoutGatewaysIsAskedWithoutAForcedRoute) {
  FakeWarden warden;
  warden.Send(kURL);
  server_.Answer(kURL, L"answer");
  EXPECT_TRUE(Connect(Store(L"s", kURL)));
  EXPECT_THAT(warden.Calls(), Not(Contains(StartsWith("ForceRoute"))));
}

TEST_F(MakeConnectionTest, AGatewayWithoutALocationForcesNoRoute) {
  const FakeWarden warden;
  Connect(Store(L"s", kURL, {Gateway(L"gw", L"", true)}));
  EXPECT_THAT(warden.Calls(), Not(Contains(StartsWith("ForceRoute"))));
}

TEST_F(MakeConnectionTest, ACancelledAuthenticationIsPassedOn) {
  FakeWarden warden;
  warden.EndWith(8);
  EXPECT_FALSE(Connect(Store(L"s", kURL)));
  EXPECT_TRUE(canceled_);
  EXPECT_TRUE(server_.Sent().empty());
}

TEST_F(MakeConnectionTest, StandardAndAdvancedGatewaysRewriteWhateverTheirMode) {
  for (const AGMode mode : {AGMode::NONE, AGMode::SG_RW, AGMode::FB_RW, AGMode::ENTCVPN_RW}) {
    EXPECT_EQ(ForcedRoute(Edition::Standard, mode),
              "'gw' 'https://gw.example' edition 0 authentication 1 mode 2");
    EXPECT_EQ(ForcedRoute(Edition::Advanced, mode),
              "'gw' 'https://gw.example' edition 1 authentication 1 mode 2");
  }
  EXPECT_TRUE(trace_.RecordsStartingWith("AG mode").empty());
}

TEST_F(MakeConnectionTest, AnEnterpriseGatewaysModeIsItsOwn) {
  EXPECT_EQ(ForcedRoute(Edition::Enterprise, AGMode::ENTCVPN_RW),
            "'gw' 'https://gw.example' edition 2 authentication 1 mode 3");
  EXPECT_EQ(ForcedRoute(Edition::Enterprise, AGMode::SG_RW),
            "'gw' 'https://gw.example' edition 2 authentication 1 mode 1");
  EXPECT_TRUE(trace_.RecordsStartingWith("AG mode").empty());
}

TEST_F(MakeConnectionTest, AnEnterpriseGatewayWithoutAModeOfTheLibrarysGetsZeroAndAWarning) {
  for (const AGMode mode : {AGMode::NONE, AGMode::FB_RW}) {
    trace_.Clear();
    EXPECT_EQ(ForcedRoute(Edition::Enterprise, mode),
              "'gw' 'https://gw.example' edition 2 authentication 1 mode 0");
    EXPECT_EQ(trace_.RecordsStartingWith("AG mode"),
              (Records{{2, kProviderFile,
                        "AG mode needs to be specified for Enterprise gateway type. By default set to SG "
                        "mode."}}));
  }
}

TEST_F(MakeConnectionTest, EveryAuthenticationKindKeepsItsNumber) {
  for (std::uint32_t kind = 0; kind <= 5; ++kind) {
    EXPECT_EQ(ForcedRoute(Edition::Standard, AGMode::NONE, static_cast<Authentication>(kind)),
              "'gw' 'https://gw.example' edition 0 authentication " + std::to_string(kind) + " mode 2");
  }
}

TEST_F(MakeConnectionTest, NumbersOutsideTheListsAreLeftUnset) {
  EXPECT_EQ(ForcedRoute(static_cast<Edition>(9), AGMode::SG_RW, static_cast<Authentication>(9)),
            "'gw' 'https://gw.example' edition 0 authentication 0 mode 0");
}

}  // namespace

#include "SRLib/SRGateway.h"
#include "SRLib/SRStore.h"
#include "support/StoreBuilders.h"

#include <gtest/gtest.h>

namespace {

using ServiceRecords::SRGateway;
using TestSupport::Gateway;
using Edition = SRGateway::GatewayEdition;
using Authentication = SRGateway::GatewayAuthentication;
using AGMode = SRGateway::AGMode;
using Gateways = std::list<SRGateway>;

TEST(SRGatewayTest, ANewGatewayLogsOnWithNoneAndNotWithTheFirstKind) {
  const SRGateway gateway;
  EXPECT_EQ(gateway.GetAuthentication(), SRGateway::GatewayAuthentication::None);
  EXPECT_EQ(gateway.GetEdition(), SRGateway::GatewayEdition::Standard);
  EXPECT_EQ(gateway.GetAGMode(), SRGateway::AGMode::NONE);
}

TEST(SRGatewayTest, ANewGatewayIsUnnamedAndTrustedByNobody) {
  const SRGateway gateway;
  EXPECT_EQ(gateway.GetName(), L"");
  EXPECT_EQ(gateway.GetLocation(), L"");
  EXPECT_FALSE(gateway.GetTrustedByUser());
  EXPECT_FALSE(gateway.GetTrustedByDS());
  EXPECT_FALSE(gateway.GetDefault());
}

TEST(SRGatewayTest, TheNumbersInTheConfigurationFileStayWhatTheyAre) {
  EXPECT_EQ(static_cast<unsigned>(Edition::Standard), 0U);
  EXPECT_EQ(static_cast<unsigned>(Edition::Advanced), 1U);
  EXPECT_EQ(static_cast<unsigned>(Edition::Enterprise), 2U);
  EXPECT_EQ(static_cast<unsigned>(Authentication::RSA), 0U);
  EXPECT_EQ(static_cast<unsigned>(Authentication::None), 1U);
  EXPECT_EQ(static_cast<unsigned>(Authentication::Domain), 2U);
  EXPECT_EQ(static_cast<unsigned>(Authentication::DomainAndRSA), 3U);
  EXPECT_EQ(static_cast<unsigned>(Authentication::SMS), 4U);
  EXPECT_EQ(static_cast<unsigned>(Authentication::GatewayKnows), 5U);
  EXPECT_EQ(static_cast<unsigned>(AGMode::NONE), 0U);
  EXPECT_EQ(static_cast<unsigned>(AGMode::SG_RW), 1U);
  EXPECT_EQ(static_cast<unsigned>(AGMode::FB_RW), 2U);
  EXPECT_EQ(static_cast<unsigned>(AGMode::ENTCVPN_RW), 3U);
}

TEST(SRGatewayTest, TheNameAloneIdentifiesAGateway) {
  EXPECT_TRUE(Gateway(L"GW", L"https://one", true) == Gateway(L"GW", L"https://two", false));
  EXPECT_FALSE(Gateway(L"GW", L"https://one") == Gateway(L"GW2", L"https://one"));
}

TEST(SRGatewayTest, NamesThatDifferOnlyInLetterCaseAreDifferent) {
  EXPECT_FALSE(Gateway(L"GW") == Gateway(L"gw"));
}

TEST(SRGatewayTest, AGatewayTrustedOnlyByTheUserIsNotReportedAsMissing) {
  SRGateway gateway = Gateway(L"GW");
  gateway.SetTrustedByUser(true);
  const Gateways none;
  EXPECT_FALSE(gateway.TrustedButNotInList(&none));
}

TEST(SRGatewayTest, AGatewayConfirmedEarlierIsReportedWhenTheListDoesNotNameIt) {
  SRGateway gateway = Gateway(L"GW");
  gateway.SetTrustedByDS(true);
  const Gateways others{Gateway(L"gw"), Gateway(L"GW2")};
  EXPECT_TRUE(gateway.TrustedButNotInList(&others));
}

TEST(SRGatewayTest, AGatewayConfirmedEarlierIsNotReportedWhenTheListNamesIt) {
  SRGateway gateway = Gateway(L"GW", L"https://one");
  gateway.SetTrustedByDS(true);
  const Gateways others{Gateway(L"GW2"), Gateway(L"GW", L"https://two")};
  EXPECT_FALSE(gateway.TrustedButNotInList(&others));
}

}  // namespace

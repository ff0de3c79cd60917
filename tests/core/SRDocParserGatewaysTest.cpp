#include "core/ParserTest.h"

namespace {

using namespace ServiceRecords;
using namespace TestSupport;

class SRDocParserGatewaysTest : public ParserTest {
 protected:
  // The gateways of a store that has these elements in its list.
  std::list<SRGateway> Gateways(const std::wstring& elements) {
    EXPECT_TRUE(ParseServices(Service(L"s", L"<Gateways>" + elements + L"</Gateways>")));
    return Held(L"s").GetGateways();
  }
};

TEST_F(SRDocParserGatewaysTest, EveryFieldComesFromItsAttributeOrElement) {
  const auto gateways = Gateways(
      L"<Gateway Name=' G W ' Edition='Advanced' Auth='SMS' RewriteMode='FB_RW' Default='1'>"
      L"<Location>\n https://g \n</Location></Gateway>");
  ASSERT_EQ(gateways.size(), 1U);
  const SRGateway& gateway = gateways.front();
  EXPECT_EQ(gateway.GetName(), L" G W ");
  EXPECT_EQ(gateway.GetLocation(), L"https://g");
  EXPECT_EQ(gateway.GetEdition(), SRGateway::GatewayEdition::Advanced);
  EXPECT_EQ(gateway.GetAuthentication(), SRGateway::GatewayAuthentication::SMS);
  EXPECT_EQ(gateway.GetAGMode(), SRGateway::AGMode::FB_RW);
  EXPECT_TRUE(gateway.GetDefault());
  EXPECT_FALSE(gateway.GetTrustedByUser());
  EXPECT_FALSE(gateway.GetTrustedByDS());
  EXPECT_EQ(ReadingRecords(), Records{});
}

TEST_F(SRDocParserGatewaysTest, GatewaysKeepTheOrderOfTheDocumentAtAnyDepth) {
  EXPECT_EQ(Names(Gateways(GatewayElement(L"b") + L"<group>" + GatewayElement(L"a") + L"</group>" +
                           GatewayElement(L"b"))),
            (Wide{L"b", L"a", L"b"}));
}

TEST_F(SRDocParserGatewaysTest, AStoreWithoutAListHasNoGateways) {
  ASSERT_TRUE(ParseServices(Service(L"s", GatewayElement(L"outside the list"))));
  EXPECT_TRUE(Held(L"s").GetGateways().empty());
}

TEST_F(SRDocParserGatewaysTest, OnlyTheFirstListCounts) {
  ASSERT_TRUE(
      ParseServices(Service(L"s", L"<Gateways>" + GatewayElement(L"first") + L"</Gateways><Gateways>" +
                                      GatewayElement(L"second") + L"</Gateways>")));
  EXPECT_EQ(Names(Held(L"s").GetGateways()), (Wide{L"first"}));
}

TEST_F(SRDocParserGatewaysTest, ANameAloneIsEnoughAndTheRestFallsBack) {
  const auto gateways = Gateways(L"<Gateway Name='GW'/>");
  ASSERT_EQ(gateways.size(), 1U);
  EXPECT_EQ(gateways.front().GetName(), L"GW");
  EXPECT_EQ(gateways.front().GetLocation(), L"");
  EXPECT_EQ(gateways.front().GetEdition(), SRGateway::GatewayEdition::Standard);
  EXPECT_EQ(gateways.front().GetAuthentication(), SRGateway::GatewayAuthentication::None);
  EXPECT_EQ(gateways.front().GetAGMode(), SRGateway::AGMode::NONE);
  EXPECT_FALSE(gateways.front().GetDefault());
  EXPECT_EQ(ReadingRecords(),
            (Records{{2, kDocParserFile, "GatewayAuthFromString: unexpected gateway authentication type: "},
                     {2, kDocParserFile, "GatewayEditionFromString: unexpected gateway edition type: "},
                     {2, kDocParserFile, "AGModeFromString: unexpected gateway mode type: "}}));
}

TEST_F(SRDocParserGatewaysTest, AnyOneOfTheFiveIsEnough) {
  for (const wchar_t* element :
       {L"<Gateway Edition='x'/>", L"<Gateway Auth='x'/>", L"<Gateway RewriteMode='x'/>",
        L"<Gateway><Location>x</Location></Gateway>"}) {
    EXPECT_EQ(Gateways(element).size(), 1U);
  }
}

TEST_F(SRDocParserGatewaysTest, AGatewayWithNothingEndsTheReadingWithoutItsStore) {
  for (const wchar_t* empty : {L"<Gateway/>", L"<Gateway Default='true'/>",
                               L"<Gateway Name=''><Location> "
                               L"</Location></Gateway>"}) {
    EXPECT_TRUE(ParseServices(Service(L"before") +
                              Service(L"broken", std::wstring(L"<Gateways>") + empty + L"</Gateways>") +
                              Service(L"behind")));
    EXPECT_EQ(Ids(stores_), (Wide{L"before"}));
    EXPECT_EQ(ReadingRecords(),
              (Records{{2, kDocParserFile, "SR XML Parsing error: required gateway attribute is missing."}}));
  }
}

TEST_F(SRDocParserGatewaysTest, OnlyLowerCaseTrueAndOneMarkTheDefault) {
  for (const auto& [text, isDefault] :
       {std::pair(L"true", true), std::pair(L"1", true), std::pair(L"TRUE", false),
        std::pair(L"false", false), std::pair(L"", false)}) {
    const auto gateways = Gateways(std::wstring(L"<Gateway Name='GW' Default='") + text + L"'/>");
    ASSERT_EQ(gateways.size(), 1U);
    EXPECT_EQ(gateways.front().GetDefault(), isDefault);
  }
}

}  // namespace

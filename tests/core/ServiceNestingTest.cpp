#include "core/ParserTest.h"

namespace {

using namespace ServiceRecords;
using namespace TestSupport;

class ServiceNestingTest : public ParserTest {
 protected:
  // So many services inside one another, the innermost with these lists.
  static std::wstring Nested(std::size_t services, const std::wstring& lists,
                             const std::wstring& attributes = L"") {
    std::wstring text = lists;
    for (std::size_t i = 0; i < services; ++i) text = Service(std::to_wstring(i), text, attributes);
    return text;
  }

  // A list of so many gateways inside one another.
  static std::wstring Gateways(std::size_t count) {
    return L"<Gateways>" + Repeated(L"<Gateway Name=\"g\">", count) + L"<Location>l</Location>" +
           Repeated(L"</Gateway>", count) + L"</Gateways>";
  }

  void ExpectRefused(const std::wstring& services) {
    EXPECT_FALSE(ParseServices(services));
    EXPECT_EQ(trace_.Records().back(), kRefusal);
  }

  const TraceRecord kRefusal{
      2, kDocParserFile,
      "Exception parsing document containning Service Records: the document nests more "
      "than 4 services and gateways in one another"};
};

TEST_F(ServiceNestingTest, ServicesInsideServicesShareTheListsOfTheInnermost) {
  EXPECT_TRUE(ParseServices(Nested(4, L"<Internal><Beacon>in</Beacon></Internal>")));
  EXPECT_EQ(stores_.size(), 4U);
  for (const auto& [id, store] : stores_)
    EXPECT_EQ(Locations(store.Beacons(BeaconType::Internal)), (Wide{L"in"}));
}

TEST_F(ServiceNestingTest, MoreServicesInsideOneAnotherAreRefused) {
  ExpectRefused(Nested(5, L""));
}

TEST_F(ServiceNestingTest, ARootThatIsAServiceIsALevel) {
  EXPECT_TRUE(Parse<SRDocParser>(L"<Service>" + Nested(3, L"") + L"</Service>"));
  EXPECT_EQ(stores_.size(), 3U);
  EXPECT_FALSE(Parse<SRDocParser>(L"<Service>" + Nested(4, L"") + L"</Service>"));
  EXPECT_EQ(trace_.Records().back(), kRefusal);
}

TEST_F(ServiceNestingTest, GatewaysInsideOneAnotherAreLevelsToo) {
  EXPECT_TRUE(ParseServices(Service(L"s", Gateways(3))));
  EXPECT_EQ(Held(L"s").GetGateways().size(), 3U);
  ExpectRefused(Service(L"s", Gateways(4)));
  ExpectRefused(Nested(3, Gateways(2)));
}

TEST_F(ServiceNestingTest, APrefixDoesNotHideALevel) {
  std::wstring text;
  for (int i = 0; i < 5; ++i) {
    const std::wstring prefix = L"p" + std::to_wstring(i);
    text = L"<" + prefix + L":Service xmlns:" + prefix +
           L"=\"urn:morvane:servicerecord\" type=\"store\"><SRID>" + prefix +
           L"</SRID><Name>n</Name><Address>a</Address>" + text + L"</" + prefix + L":Service>";
  }
  EXPECT_FALSE(Parse<DiscoveryDocParser>(DiscoveryDocument(text)));
  EXPECT_EQ(trace_.Records().back(), kRefusal);
}

TEST_F(ServiceNestingTest, ElementsThatAreNotReadAreNoLevels) {
  const std::wstring foreign = L"<o:Service xmlns:o='urn:other'><o:Gateway>";
  const std::wstring end = L"</o:Gateway></o:Service>";
  EXPECT_TRUE(ParseServices(Repeated(foreign, 5) + Service(L"s", Gateways(3)) + Repeated(end, 5)));
  EXPECT_EQ(Names(Held(L"s").GetGateways()), (Wide{L"g", L"g", L"g"}));
  EXPECT_TRUE(Parse<DiscoveryDocParser>(
      DiscoveryDocument(Repeated(foreign + L"<Service xmlns='urn:other'>", 5) +
                        Service(L"s", L"", InServiceRecordNamespace()) + Repeated(L"</Service>" + end, 5))));
  EXPECT_EQ(Ids(stores_), (Wide{L"s"}));
}

TEST_F(ServiceNestingTest, ElementsThatAreReadAreLevelsInWhicheverNamespace) {
  ExpectRefused(Nested(5, L"", L" xmlns='urn:other'"));
}

TEST_F(ServiceNestingTest, ServicesBesideEachOtherAreNoLevels) {
  std::wstring services;
  for (int i = 0; i < 100; ++i) services += Service(std::to_wstring(i), Gateways(1));
  EXPECT_TRUE(ParseServices(services));
  EXPECT_EQ(stores_.size(), 100U);
}

}  // namespace

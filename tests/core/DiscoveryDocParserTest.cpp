#include "SRLib/DiscoveryDocParser.h"
#include "core/ParserTest.h"

namespace {

using namespace ServiceRecords;
using namespace TestSupport;

class DiscoveryDocParserTest : public ParserTest {};

TEST_F(DiscoveryDocParserTest, AValidDocumentIsReadWithNothingButTheClosingRecord) {
  ASSERT_TRUE(Parse<DiscoveryDocParser>(DiscoveryDocument(
      Service(L"s", L"<Gateways>" + GatewayElement(L"gw") + L"</Gateways>", InServiceRecordNamespace()))));
  EXPECT_EQ(Ids(stores_), (Wide{L"s"}));
  EXPECT_EQ(Names(Held(L"s").GetGateways()), (Wide{L"gw"}));
  EXPECT_EQ(ReadingRecords(), Records{});
}

TEST_F(DiscoveryDocParserTest, ServicesAreFoundAtAnyDepthAmongElementsOfOtherNamespaces) {
  ASSERT_TRUE(Parse<DiscoveryDocParser>(DiscoveryDocument(
      L"<x:extra xmlns:x='urn:x'><x:Service/>" + Service(L"deep", L"", InServiceRecordNamespace()) +
      L"</x:extra>" + Service(L"shallow", L"", InServiceRecordNamespace()))));
  EXPECT_EQ(Ids(stores_), (Wide{L"deep", L"shallow"}));
  EXPECT_EQ(ReadingRecords(), Records{});
}

TEST_F(DiscoveryDocParserTest, ServicesOutsideTheServiceRecordNamespaceAreNotRead) {
  EXPECT_TRUE(Parse<DiscoveryDocParser>(DiscoveryDocument(Service(L"s"))));
  EXPECT_TRUE(stores_.empty());
}

TEST_F(DiscoveryDocParserTest, APrefixedServiceIsFoundButItsPartsAreMatchedAsWritten) {
  EXPECT_TRUE(Parse<DiscoveryDocParser>(DiscoveryDocument(
      L"<sr:Service xmlns:sr='urn:morvane:servicerecord' type='store'><SRID>s</SRID><Name>n</Name>"
      L"<Address>a</Address></sr:Service>")));
  EXPECT_EQ(Ids(stores_), (Wide{L"s"}));
}

TEST_F(DiscoveryDocParserTest, ItsSchemaIsMatchedInAnyLetterCase) {
  std::wstring text = DiscoveryDocument(Service(L"s", L"", InServiceRecordNamespace()));
  text.replace(text.find(L"discovery discovery") + 10, 9, L"DISCOVERY");
  ASSERT_TRUE(Parse<DiscoveryDocParser>(text));
  EXPECT_EQ(ReadingRecords(), Records{});
}

TEST_F(DiscoveryDocParserTest, ASchemaErrorNamesTheDiscoveryDocument) {
  const std::wstring text = DiscoveryDocument(L"<Unheard/>" + Service(L"s", L"", InServiceRecordNamespace()));
  ASSERT_TRUE(Parse<DiscoveryDocParser>(text));
  EXPECT_EQ(Ids(stores_), (Wide{L"s"}));
  EXPECT_EQ(trace_.RecordsStartingWith("Errors Detected"),
            (Records{{2, kDocParserFile, "Errors Detected during schema validation of Discovery document"}}));
}

}  // namespace

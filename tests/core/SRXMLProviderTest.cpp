#include "SRLib/SRXMLProvider.h"
#include "core/ParserTest.h"

namespace {

using namespace ServiceRecords;
using namespace TestSupport;

class SRXMLProviderTest : public ParserTest {
 protected:
  static Wide IdsIn(const std::wstring& text) { return Ids(SRXMLProvider().Parse(text)); }
};

const std::wstring& DiscoveryText() {
  static const std::wstring text = DiscoveryDocument(Service(L"s", L"", InServiceRecordNamespace()));
  return text;
}

TEST_F(SRXMLProviderTest, ADiscoveryDocumentIsReadByItsOwnSchema) {
  EXPECT_EQ(IdsIn(L"<?xml version=\"1.0\"?>\n" + DiscoveryText()), (Wide{L"s"}));
  EXPECT_EQ(trace_.Records(), (Records{{0, kDocParserFile, "No Errors Detected"}}));
}

TEST_F(SRXMLProviderTest, AServiceRecordIsReadByItsOwnSchema) {
  EXPECT_EQ(IdsIn(ServiceRecord(Service(L"s"))), (Wide{L"s"}));
  EXPECT_EQ(trace_.Records(), (Records{{0, kDocParserFile, "No Errors Detected"}}));
}

TEST_F(SRXMLProviderTest, TheWordInLowerCaseIsAServiceRecord) {
  EXPECT_EQ(IdsIn(L"<discovery><Unbound:x/>" + Service(L"s") + L"</discovery>"), Wide{});
  EXPECT_EQ(
      trace_.RecordsStartingWith("Errors Detected"),
      (Records{{2, kDocParserFile, "Errors Detected during schema validation of ServiceRecords document"}}));
}

TEST_F(SRXMLProviderTest, TheWordAloneDoesNotMakeADiscoveryDocument) {
  EXPECT_EQ(IdsIn(ServiceRecord(Service(L"Discovery") + L"<!-- Discovery < Discovery -->")),
            (Wide{L"Discovery"}));
  EXPECT_EQ(trace_.Records(), (Records{{0, kDocParserFile, "No Errors Detected"}}));
}

TEST_F(SRXMLProviderTest, TheWordAnywhereMakesADiscoveryDocument) {
  EXPECT_EQ(IdsIn(L"<Services><!-- <Discovery -->" + Service(L"s") + L"</Services>"), Wide{});
  EXPECT_EQ(IdsIn(L"<Services><!-- <Discovery -->" + Service(L"s", L"", InServiceRecordNamespace()) +
                  L"</Services>"),
            (Wide{L"s"}));
}

TEST_F(SRXMLProviderTest, ServicesOfAServiceRecordWithAPrefixAreNotRead) {
  EXPECT_EQ(
      IdsIn(L"<r:Services xmlns:r='urn:morvane:servicerecord'><r:Service type='store'><r:SRID>s</r:SRID>"
            L"<r:Name>n</r:Name><r:Address>a</r:Address></r:Service></r:Services>"),
      Wide{});
  EXPECT_TRUE(trace_.RecordsStartingWith("Failed to parse").empty());
}

TEST_F(SRXMLProviderTest, AnEmptyTextFailsWithOneLine) {
  EXPECT_EQ(IdsIn(L""), Wide{});
  EXPECT_EQ(trace_.RecordsStartingWith("Failed to parse"),
            (Records{{2, kXMLProviderFile, "Failed to parse SR document: "}}));
}

TEST_F(SRXMLProviderTest, TheLineOfAFailureHoldsTheWholeText) {
  EXPECT_EQ(IdsIn(L"nothing \u20AC"), Wide{});
  EXPECT_EQ(trace_.Records().back(),
            (TraceRecord{2, kXMLProviderFile, "Failed to parse SR document: nothing \xE2\x82\xAC"}));
}

TEST_F(SRXMLProviderTest, TheResultTellsADocumentWithoutStoresFromAFailure) {
  EXPECT_TRUE(SRXMLProvider().ProcessNewDocument(ServiceRecord(L""), stores_));
  EXPECT_TRUE(SRXMLProvider().ProcessNewDocument(DiscoveryDocument(L""), stores_));
  EXPECT_FALSE(SRXMLProvider().ProcessNewDocument(L"<Discovery", stores_));
}

}  // namespace

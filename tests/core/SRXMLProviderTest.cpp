#include "SRLib/SRXMLProvider.h"
#include "core/ParserTest.h"
#include "libs/DomLib/DocumentBounds.h"

#include <string>
#include <vector>

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

TEST_F(SRXMLProviderTest, WhoeverWantsItIsToldWhatIsWrongAndWhere) {
  using Gravity = DomLib::DocumentProblem::Gravity;
  std::vector<DomLib::DocumentProblem> problems;
  const auto process = [&](const std::wstring& text) {
    problems.clear();
    SRXMLProvider provider;
    provider.ReportTo([&problems](const DomLib::DocumentProblem& problem) { problems.push_back(problem); });
    static_cast<void>(provider.ProcessNewDocument(text, stores_));
  };
  process(ServiceRecord(Service(L"s")));
  EXPECT_TRUE(problems.empty());

  process(ServiceRecord(L"\n\n<H\u00E4nt/>"));
  ASSERT_FALSE(problems.empty());
  EXPECT_EQ(problems.front().gravity, Gravity::Error);
  EXPECT_EQ(problems.front().file, "") << "the document itself";
  EXPECT_EQ(problems.front().line, 3U);
  EXPECT_EQ(problems.front().column, 8U);
  EXPECT_NE(problems.front().text.find("'H\u00E4nt'"), std::string::npos) << problems.front().text;

  process(ServiceRecord(Service(L"s")) + L"<");
  ASSERT_EQ(problems.size(), 1U);
  EXPECT_EQ(problems.front().gravity, Gravity::Fatal);

  process(
      ServiceRecord(L"<Service type='store'><SRID>a\\b</SRID><Name>n</Name><Address>a</Address></Service>"));
  ASSERT_EQ(problems.size(), 1U);
  EXPECT_EQ(problems.front().gravity, Gravity::Fatal);
  EXPECT_EQ(problems.front().text, "a service's id holds a backslash or a character that is no text.");

  process(std::wstring(DomLib::kMaximumDocumentBytes + 1, L' '));
  ASSERT_EQ(problems.size(), 1U);
  EXPECT_EQ(problems.front().text, "the document is larger than 16 MiB");
}

TEST_F(SRXMLProviderTest, TellsTheRootAndWhetherItNamesASchema) {
  SRXMLProvider provider;
  EXPECT_EQ(provider.RootName(), L"");
  static_cast<void>(provider.ProcessNewDocument(ServiceRecord(L""), stores_));
  EXPECT_EQ(provider.RootName(), L"Services");
  EXPECT_TRUE(provider.NamesSchema());
  SRXMLProvider another;
  static_cast<void>(another.ProcessNewDocument(L"<discovery/>", stores_));
  EXPECT_EQ(another.RootName(), L"discovery");
  EXPECT_FALSE(another.NamesSchema());
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

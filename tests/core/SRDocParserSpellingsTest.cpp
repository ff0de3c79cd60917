#include "core/ParserTest.h"

#include <cstring>

namespace {

using namespace ServiceRecords;
using namespace TestSupport;
using Edition = SRGateway::GatewayEdition;
using Authentication = SRGateway::GatewayAuthentication;
using Mode = SRGateway::AGMode;

class SRDocParserSpellingsTest : public ParserTest {
 protected:
  // The one record since the last call.
  TraceRecord Written() {
    const Records records = trace_.Records();
    trace_.Clear();
    EXPECT_EQ(records.size(), 1U);
    return records.empty() ? TraceRecord{} : records.front();
  }

  const SRDocParser parser_{};
};

TEST_F(SRDocParserSpellingsTest, TheKindIsReadInAnyLetterCase) {
  for (const wchar_t* text : {L"store", L"STORE", L"Store", L"sToRe"})
    EXPECT_EQ(parser_.SRTypeFromString(text), SRType::store);
  EXPECT_EQ(trace_.Records(), Records{});
}

TEST_F(SRDocParserSpellingsTest, AnyOtherKindIsUnknownAndWritten) {
  for (const auto& [text, narrow] :
       {std::pair(L"stores", "stores"), std::pair(L"", ""), std::pair(L" store", " store"),
        std::pair(L"\u017Ftore", "\xC5\xBFtore")}) {
    EXPECT_EQ(parser_.SRTypeFromString(text), SRType::unknown);
    EXPECT_EQ(Written(),
              (TraceRecord{2, kDocParserFile,
                           std::string("SRTypeFromString conversion error unknown type: ") + narrow}));
  }
}

TEST_F(SRDocParserSpellingsTest, AStoreOfAnUnknownKindIsKept) {
  ASSERT_TRUE(
      Parse(L"<a><Service type='desktop'><SRID>s</SRID><Name>n</Name><Address>a</Address></Service></a>"));
  EXPECT_EQ(Held(L"s").GetSRType(), SRType::unknown);
  EXPECT_EQ(ReadingRecords(),
            (Records{{2, kDocParserFile, "SRTypeFromString conversion error unknown type: desktop"}}));
}

TEST_F(SRDocParserSpellingsTest, EditionsAreReadAsSpelled) {
  EXPECT_EQ(parser_.GatewayEditionFromString(L"Advanced"), Edition::Advanced);
  EXPECT_EQ(parser_.GatewayEditionFromString(L"Enterprise"), Edition::Enterprise);
  EXPECT_EQ(parser_.GatewayEditionFromString(L"Standard"), Edition::Standard);
  EXPECT_EQ(trace_.Records(), Records{});
  for (const char* text : {"advanced", "ENTERPRISE", "", "Standard "}) {
    EXPECT_EQ(parser_.GatewayEditionFromString(std::wstring(text, text + std::strlen(text))),
              Edition::Standard);
    EXPECT_EQ(
        Written(),
        (TraceRecord{2, kDocParserFile,
                     std::string("GatewayEditionFromString: unexpected gateway edition type: ") + text}));
  }
}

TEST_F(SRDocParserSpellingsTest, WaysToLogOnAreReadAsSpelled) {
  EXPECT_EQ(parser_.GatewayAuthFromString(L"RSA"), Authentication::RSA);
  EXPECT_EQ(parser_.GatewayAuthFromString(L"Domain"), Authentication::Domain);
  EXPECT_EQ(parser_.GatewayAuthFromString(L"DomainAndRSA"), Authentication::DomainAndRSA);
  EXPECT_EQ(parser_.GatewayAuthFromString(L"SMS"), Authentication::SMS);
  EXPECT_EQ(parser_.GatewayAuthFromString(L"GatewayKnows"), Authentication::GatewayKnows);
  EXPECT_EQ(parser_.GatewayAuthFromString(L"None"), Authentication::None);
  EXPECT_EQ(trace_.Records(), Records{});
  for (const char* text : {"rsa", "NONE", "", "domain"}) {
    EXPECT_EQ(parser_.GatewayAuthFromString(std::wstring(text, text + std::strlen(text))),
              Authentication::None);
    EXPECT_EQ(
        Written(),
        (TraceRecord{2, kDocParserFile,
                     std::string("GatewayAuthFromString: unexpected gateway authentication type: ") + text}));
  }
}

TEST_F(SRDocParserSpellingsTest, RewriteModesAreReadAsSpelled) {
  EXPECT_EQ(parser_.AGModeFromString(L"SG_RW"), Mode::SG_RW);
  EXPECT_EQ(parser_.AGModeFromString(L"FB_RW"), Mode::FB_RW);
  EXPECT_EQ(parser_.AGModeFromString(L"ENTCVPN_RW"), Mode::ENTCVPN_RW);
  EXPECT_EQ(parser_.AGModeFromString(L"NONE"), Mode::NONE);
  EXPECT_EQ(trace_.Records(), Records{});
  for (const char* text : {"sg_rw", "None", ""}) {
    EXPECT_EQ(parser_.AGModeFromString(std::wstring(text, text + std::strlen(text))), Mode::NONE);
    EXPECT_EQ(Written(),
              (TraceRecord{2, kDocParserFile,
                           std::string("AGModeFromString: unexpected gateway mode type: ") + text}));
  }
}

}  // namespace

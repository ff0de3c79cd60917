#include "core/ParserTest.h"

namespace {

using namespace ServiceRecords;
using namespace TestSupport;

// Which ids, names and addresses make a service one that cannot be read.
class ReadableNamesTest : public ParserTest {
 protected:
  using Parts = std::vector<std::wstring>;

  // Whether a service between two others is read; where it is not, the ones behind it are not read either.
  bool IsRead(const std::wstring& service, const std::wstring& prolog = L"") {
    EXPECT_TRUE(Parse(prolog + L"<Services>" + ServiceAt(L"0 before", L"https://h") + service +
                      ServiceAt(L"z behind", L"https://h") + L"</Services>"));
    EXPECT_EQ(stores_.count(L"0 before"), 1U);
    EXPECT_EQ(stores_.count(L"z behind"), stores_.size() - 1 == 2 ? 1U : 0U);
    return stores_.size() == 3;
  }

  static std::wstring WithGateway(const std::wstring& name, const std::wstring& location) {
    return ServiceAt(L"s", L"https://h",
                     L"<Gateways><Gateway Name=\"" + name + L"\"><Location>" + location +
                         L"</Location></Gateway></Gateways>");
  }
  static std::wstring WithBeacon(const wchar_t* kind, const std::wstring& location) {
    return ServiceAt(L"s", L"https://h",
                     std::wstring(L"<") + kind + L"><Beacon>" + location + L"</Beacon></" + kind + L">");
  }
  static std::wstring Named(const std::wstring& name, const std::wstring& id = L"s") {
    return L"<Service type=\"store\"><SRID>" + id + L"</SRID><Name>" + name +
           L"</Name><Address>https://h</Address></Service>";
  }

  void ExpectReason(const std::string& reason) {
    EXPECT_EQ(trace_.RecordsStartingWith("SR XML Parsing error"),
              (Records{{2, kDocParserFile, "SR XML Parsing error: " + reason}}));
  }

  const std::wstring longest_ = std::wstring(4096, L'\u00E9');
  const std::wstring tooLong_ = longest_ + L"x";
};

TEST_F(ReadableNamesTest, EveryTextMayHave4096Characters) {
  EXPECT_TRUE(IsRead(Named(L"name", longest_)));
  EXPECT_TRUE(IsRead(Named(longest_)));
  EXPECT_TRUE(IsRead(ServiceAt(L"s", longest_)));
  EXPECT_TRUE(IsRead(WithGateway(longest_, longest_)));
  EXPECT_TRUE(IsRead(WithBeacon(L"Internal", longest_)));
  EXPECT_TRUE(IsRead(WithBeacon(L"External", longest_)));
}

TEST_F(ReadableNamesTest, BlanksAroundATextDoNotCount) {
  EXPECT_TRUE(IsRead(Named(L" " + longest_ + L" ", L" " + longest_ + L"\n")));
  EXPECT_TRUE(IsRead(WithBeacon(L"Internal", L" " + longest_ + L" ")));
}

TEST_F(ReadableNamesTest, AServiceWithALongerTextIsRefused) {
  EXPECT_FALSE(IsRead(Named(L"name", tooLong_)));
  ExpectReason("a service's id has more than 4096 characters.");
  EXPECT_FALSE(IsRead(Named(tooLong_)));
  ExpectReason("a service's name has more than 4096 characters.");
  EXPECT_FALSE(IsRead(ServiceAt(L"s", tooLong_)));
  ExpectReason("a service's address has more than 4096 characters.");
}

TEST_F(ReadableNamesTest, AServiceWithALongerTextInItsListsIsRefused) {
  EXPECT_FALSE(IsRead(WithGateway(tooLong_, L"https://gw")));
  ExpectReason("a gateway's name has more than 4096 characters.");
  EXPECT_FALSE(IsRead(WithGateway(L"GW", tooLong_)));
  ExpectReason("a gateway's address has more than 4096 characters.");
  for (const wchar_t* kind : {L"Internal", L"External"}) {
    EXPECT_FALSE(IsRead(WithBeacon(kind, tooLong_)));
    ExpectReason("a beacon's address has more than 4096 characters.");
  }
}

TEST_F(ReadableNamesTest, ABackslashInAnIdOrAGatewaysNameIsRefused) {
  EXPECT_FALSE(IsRead(ServiceAt(L"trusted\\Addr", L"https://h")));
  ExpectReason("a service's id holds a backslash or a character that is no text.");
  EXPECT_FALSE(IsRead(ServiceAt(L"s\\", L"https://h")));
  EXPECT_FALSE(IsRead(WithGateway(L"A\\B", L"https://gw")));
  ExpectReason("a gateway's name holds a backslash or a character that is no text.");
}

TEST_F(ReadableNamesTest, CharactersThatAreNoTextAreRefusedInAnIdOrAGatewaysName) {
  const std::wstring version11 = L"<?xml version=\"1.1\"?>";
  for (const wchar_t* character :
       {L"&#1;", L"&#8;", L"&#11;x", L"&#31;", L"&#127;", L"&#128;", L"&#159;", L"&#xFDD0;", L"&#xFDEF;"}) {
    EXPECT_FALSE(IsRead(ServiceAt(L"trusted" + std::wstring(character), L"https://h"), version11))
        << character;
    EXPECT_FALSE(IsRead(WithGateway(L"trusted" + std::wstring(character), L"https://gw"), version11))
        << character;
  }
}

TEST_F(ReadableNamesTest, OtherCharactersAreReadInAnIdOrAGatewaysName) {
  const std::wstring characters = L"\t\n&#13;&#9;\u00A0/:&amp;&lt;.$%\u00E9\u0416\u20AC\uFDCF\uFDF0\uFFFD 1";
  EXPECT_TRUE(IsRead(ServiceAt(L"id" + characters, L"https://h")));
  EXPECT_TRUE(IsRead(WithGateway(L"gw" + characters, L"https://gw")));
}

TEST_F(ReadableNamesTest, NamesForPeopleAndAddressesMayHoldThem) {
  EXPECT_TRUE(IsRead(Named(L"back\\slash &#xFDD0;")));
  EXPECT_TRUE(IsRead(ServiceAt(L"s", L"https://h/\\&#xFDD0;")));
  EXPECT_TRUE(IsRead(WithGateway(L"GW", L"https://gw/\\&#xFDD0;")));
  EXPECT_TRUE(IsRead(WithBeacon(L"Internal", L"https://in/\\&#xFDD0;")));
}

}  // namespace

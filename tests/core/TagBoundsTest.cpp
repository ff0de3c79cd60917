#include "core/BoundsTest.h"

namespace {

using namespace ServiceRecords;
using namespace TestSupport;

class TagBoundsTest : public BoundsTest {
 protected:
  static std::wstring Attributes(std::size_t count) {
    std::wstring text;
    for (std::size_t i = 0; i < count; ++i) text += L" a" + std::to_wstring(i) + L"='x'";
    return text;
  }

  // A foreign element of that built-in type in a discovery document.
  static std::wstring Typed(const std::wstring& type, const std::wstring& text) {
    return DiscoveryDocument(
        L"<o:x xmlns:o='urn:other' xmlns:xs='http://www.w3.org/2001/XMLSchema' xsi:type='" + type + L"'>" +
        text + L"</o:x>");
  }

  void ExpectListRefused(const std::wstring& document) {
    EXPECT_FALSE(Parse<DiscoveryDocParser>(document));
    EXPECT_EQ(trace_.Records().back(),
              (TraceRecord{2, kDocParserFile,
                           "Exception parsing document containning Service Records: the document has a list "
                           "of references (type IDREFS or ENTITIES)"}));
  }

  static constexpr char kTooManyAttributes[] = "the document has an element of more than 1000 attributes";
  static constexpr char kTooLargeTag[] = "the document has too large a tag or declaration";
  static constexpr char kTooMuchMarkup[] = "the document declares an entity of more than 64 KiB of markup";
};

TEST_F(TagBoundsTest, AThousandAttributesOfAnElementAreRead) {
  ExpectRead(L"<Services" + Attributes(1000) + L"/>");
}

TEST_F(TagBoundsTest, OneAttributeMoreIsRefused) {
  ExpectRefused(L"<Services" + Attributes(1001) + L"/>", kTooManyAttributes);
}

TEST_F(TagBoundsTest, DeclaredAttributesAreAttributesToo) {
  std::wstring declared;
  for (int i = 0; i < 1001; ++i) declared += L" a" + std::to_wstring(i) + L" CDATA 'x'";
  ExpectRefused(Declaring(L"<!ATTLIST Services" + declared + L">"), kTooManyAttributes);
}

TEST_F(TagBoundsTest, ALargeTagIsRefusedBeforeItsAttributesAreCompared) {
  for (const wchar_t* start : {L" ", L" xmlns:"}) {
    std::wstring attributes;
    for (const std::wstring& name : CollidingNames(32768)) attributes += start + name + L"='u'";
    ExpectRefused(L"<Services" + attributes + L"/>", kTooLargeTag);
    EXPECT_EQ(Refusal({}, L"<Services" + attributes + L"/>"), kTooLargeTag);
  }
}

TEST_F(TagBoundsTest, AnAttributeOfAnyLengthIsNoLargeTag) {
  ExpectRead(L"<Services a='" + std::wstring(15 * kMiB, L'x') + L"'/>");
}

TEST_F(TagBoundsTest, MarkupInAnEntityIsBounded) {
  const std::wstring element = L"<a" + Attributes(900) + L"/>";
  ExpectRead(Declaring(L"<!ENTITY e \"" + element + L"\">", L"<Services>&e;</Services>"));
  ExpectRefused(Declaring(L"<!ENTITY e \"" + Repeated(element, 10) + L"\">"), kTooMuchMarkup);
  ExpectRefused(Declaring(L"<!ENTITY % e \"&#60;!--" + std::wstring(kMiB, L'x') + L"-->\">"), kTooMuchMarkup);
}

TEST_F(TagBoundsTest, ListsOfReferencesAreRefused) {
  ExpectListRefused(Declaring(L"<!ATTLIST Services a IDREFS #IMPLIED>"));
  ExpectListRefused(Declaring(L"<!ATTLIST Services a ENTITIES #IMPLIED>"));
  ExpectListRefused(Typed(L"xs:IDREFS", L"a b"));
  ExpectListRefused(Typed(L" xs:ENTITIES ", L"a b"));
  ExpectListRefused(Typed(L"&#10;&#9;xs:ENTITIES&#13;", L"a b"));
  ExpectListRefused(L"<?xml version='1.1'?>" + Typed(L"&#x85;xs:IDREFS&#x2028;", L"a b"));
}

TEST_F(TagBoundsTest, AListOfReferencesIsKnownByItsNamespace) {
  const std::wstring schemaLanguage = L"='http://www.w3.org/2001/XMLSchema'";
  ExpectListRefused(Typed(L"q:IDREFS' xmlns:q" + schemaLanguage + L" z='", L"a b"));
  ExpectListRefused(Typed(L"IDREFS' xmlns" + schemaLanguage + L" z='", L"a b"));
  for (const wchar_t* type :
       {L"o:IDREFS", L"o:ENTITIES", L"IDREFS", L"unbound:IDREFS", L"xs:IDREFSET", L"xs:MYENTITIES",
        L"IDREFS:x' xmlns:IDREFS='urn:other", L"xs:IDREFS' xmlns:xs='urn:other"}) {
    EXPECT_TRUE(Parse<DiscoveryDocParser>(Typed(type, L"a b"))) << type;
  }
}

TEST_F(TagBoundsTest, OtherTypesAreRead) {
  ExpectRead(Declaring(L"<!ATTLIST Services a ID #IMPLIED b IDREF #IMPLIED c NMTOKENS #IMPLIED>"));
  EXPECT_TRUE(Parse<DiscoveryDocParser>(Typed(L"xs:NMTOKENS", Repeated(L"a ", 100000))));
  EXPECT_EQ(ReadingRecords(), Records{});
}

TEST_F(TagBoundsTest, AServiceMayClaimAnyType) {
  std::wstring text = ServiceRecord(Service(L"s"));
  ExpectRead(text.replace(text.find(L"\"store\""), 7, L"\"IDREFS\""));
  EXPECT_EQ(Held(L"s").GetSRType(), SRType::unknown);
}

TEST_F(TagBoundsTest, NamesThatCollideRunOutOfTimeWhereverTheyAreDeclared) {
  const std::wstring starts[] = {L"<!ENTITY ", L"<!ENTITY % ", L"<!NOTATION ", L"<!ELEMENT ", L"<!ATTLIST "};
  const std::wstring ends[] = {L" ''>", L" ''>", L" SYSTEM 'x'>", L" EMPTY>", L">"};
  for (std::size_t i = 0; i < std::size(starts); ++i) {
    std::wstring declarations;
    for (const std::wstring& name : CollidingNames(32768)) declarations += starts[i] + name + ends[i];
    EXPECT_EQ(Refusal(WithTime(std::chrono::milliseconds(200)), Declaring(declarations)),
              "the document takes longer than 200 ms to parse")
        << declarations.substr(0, 60).c_str();
  }
}

}  // namespace

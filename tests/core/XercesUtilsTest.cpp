#include "core/CoreTest.h"
#include "libs/DomLib/DescendantWalk.h"
#include "libs/DomLib/DomServices.h"
#include "libs/DomLib/XercesUtils.h"

#include <xercesc/dom/DOM.hpp>

namespace {

using xercesc::DOMElement;

constexpr XMLCh kUnits[] = {u'a', 0xD83D, 0xDE00, 0x00E9, 0};

TEST(XercesUtilsTest, EveryUnitBecomesOneWideCharacterWithoutPairingSurrogates) {
  const std::wstring wide = AsWString(kUnits);
  ASSERT_EQ(wide.size(), 4U);
  EXPECT_EQ(static_cast<unsigned long>(wide[1]), 0xD83DUL);
  EXPECT_EQ(static_cast<unsigned long>(wide[2]), 0xDE00UL);
  EXPECT_EQ(wide[3], L'\u00E9');
}

TEST(XercesUtilsTest, EveryUnitIsCutToEightBitsForNarrowText) {
  EXPECT_EQ(AsString(kUnits), std::string("a\x3D\0\xE9", 4));
}

TEST(XercesUtilsTest, NoTextIsEmptyText) {
  constexpr XMLCh empty[] = {0};
  EXPECT_EQ(AsString(nullptr), "");
  EXPECT_EQ(AsString(empty), "");
  EXPECT_TRUE(AsXString(static_cast<const char*>(nullptr)).empty());
  EXPECT_TRUE(AsXString("").empty());
}

TEST(XercesUtilsTest, BytesAreSignExtendedIntoUnits) {
  EXPECT_EQ(AsXString("a\x80\xFF"), (DomLib::XString{u'a', 0xFF80, 0xFFFF}));
}

TEST(XercesUtilsTest, WideCharactersAreCutToSixteenBits) {
  EXPECT_EQ(AsXString(std::wstring(L"a\U0001F600")), (DomLib::XString{u'a', 0xF600}));
}

TEST(XercesUtilsTest, OnlyLowerCaseTrueAndOneAreTrue) {
  EXPECT_TRUE(AsBool(L"true"));
  EXPECT_TRUE(AsBool(L"1"));
  for (const wchar_t* text : {L"True", L"TRUE", L"yes", L"0", L"", L" true", L"11"})
    EXPECT_FALSE(AsBool(text));
}

TEST(XercesUtilsTest, TrimRemovesWhatTheLocaleCallsSpaceFromBothEnds) {
  EXPECT_EQ(trim(L" \t\r\n a b \n", std::locale::classic()), L"a b");
  EXPECT_EQ(trim(L"ab", std::locale::classic()), L"ab");
  EXPECT_EQ(trim(L" \t ", std::locale::classic()), L"");
  EXPECT_EQ(trim(L"", std::locale::classic()), L"");
}

class ElementTest : public TestSupport::CoreTest {
 protected:
  const DOMElement& Root(const std::wstring& text) { return *dom_.GetDocument(text)->getDocumentElement(); }

  DOMServices dom_;
};

TEST_F(ElementTest, AnAttributeIsReadAsItStands) {
  const DOMElement& root = Root(L"<a b='  x \u20AC ' c=''/>");
  EXPECT_EQ(NonNullAttribute(root, "b"), L"  x \u20AC ");
  EXPECT_EQ(NonNullAttribute(root, "c"), L"");
}

TEST_F(ElementTest, AMissingAttributeIsEmpty) {
  EXPECT_EQ(NonNullAttribute(Root(L"<a B='x'/>"), "b"), L"");
}

TEST_F(ElementTest, TextIsTrimmed) {
  EXPECT_EQ(SubNodeText(Root(L"<a><b>\n  x y\t</b></a>"), "b"), L"x y");
}

TEST_F(ElementTest, ACharacterDataSectionIsReturnedAsItStandsAndDiscardsWhatCameBefore) {
  EXPECT_EQ(SubNodeText(Root(L"<a><b> before <![CDATA[  x ]]> behind </b></a>"), "b"), L"  x ");
}

TEST_F(ElementTest, TheFirstOfSeveralCharacterDataSectionsCounts) {
  EXPECT_EQ(SubNodeText(Root(L"<a><b><![CDATA[1]]><![CDATA[2]]></b></a>"), "b"), L"1");
}

TEST_F(ElementTest, TheLastTextThatIsNotBlankWins) {
  EXPECT_EQ(SubNodeText(Root(L"<a><b> one <c>inner</c> two <!-- note --> \n <?pi?></b></a>"), "b"), L"two");
}

TEST_F(ElementTest, TheTextOfInnerElementsIsNotRead) {
  EXPECT_EQ(SubNodeText(Root(L"<a><b><c>inner</c></b></a>"), "b"), L"");
}

TEST_F(ElementTest, TheFirstDescendantInDocumentOrderCountsAtAnyDepth) {
  EXPECT_EQ(SubNodeText(Root(L"<a><c><d><b>deep</b></d></c><b>shallow</b></a>"), "b"), L"deep");
}

TEST_F(ElementTest, TheElementItselfIsNotItsDescendant) {
  EXPECT_EQ(SubNodeText(Root(L"<b>own<c/></b>"), "b"), L"");
}

TEST_F(ElementTest, WithoutSuchAnElementTheTextIsEmpty) {
  EXPECT_EQ(SubNodeText(Root(L"<a><B>x</B><p:b>y</p:b></a>"), "b"), L"");
}

TEST_F(ElementTest, ElementsBehindTheElementAreNotItsDescendants) {
  const DOMElement& root = Root(L"<a><c><d/></c><b>outside</b></a>");
  EXPECT_EQ(SubNodeText(*DomLib::DescendantWalk(root).Next(DomLib::XName("c").Get()), "b"), L"");
}

TEST_F(ElementTest, DescendantsFollowEachOtherInDocumentOrder) {
  const DOMElement& root = Root(L"<a><b n='1'><b n='2'/></b><c><b n='3'/></c><b n='4'/></a>");
  std::wstring order;
  DomLib::DescendantWalk walk(root);
  while (const DOMElement* next = walk.Next(DomLib::XName("b").Get())) order += NonNullAttribute(*next, "n");
  EXPECT_EQ(order, L"1234");
  EXPECT_EQ(walk.Next(), nullptr) << "the walk is over";
}

TEST_F(ElementTest, AWalkIsOfTheElementsBelowItsRootAlone) {
  const DOMElement& root = Root(L"<a><c>text<d/><!-- --><e>t</e></c><b/></a>");
  const DOMElement* inner = DomLib::DescendantWalk(root).Next(DomLib::XName("c").Get());
  ASSERT_NE(inner, nullptr);
  DomLib::DescendantWalk walk(*inner);
  for (const char* name : {"d", "e"}) EXPECT_EQ(walk.Next()->getNodeName(), AsXString(name));
  EXPECT_EQ(walk.Next(), nullptr);
  EXPECT_EQ(DomLib::DescendantWalk(*inner).Next(DomLib::XName("b").Get()), nullptr);
}

}  // namespace

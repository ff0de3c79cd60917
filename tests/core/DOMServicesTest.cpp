#include "core/CoreTest.h"
#include "core/Documents.h"
#include "libs/DomLib/DescendantWalk.h"
#include "libs/DomLib/DomServices.h"
#include "libs/DomLib/XercesUtils.h"
#include "support/TemporaryFolder.h"

#include <xercesc/dom/DOM.hpp>
#include <xercesc/framework/MemBufInputSource.hpp>

#include <algorithm>
#include <fstream>

namespace {

using namespace TestSupport;

class DOMServicesTest : public CoreTest {
 protected:
  void UseServiceRecordSchema() { dom_.SetSchema(L"serviceRecord.xsd", L"servicerecord.xsd"); }

  // Every record of the parse that names one of these words and nothing else.
  std::size_t Count(const std::string& text) {
    const auto records = trace_.Records();
    return static_cast<std::size_t>(std::count_if(
        records.begin(), records.end(), [&text](const TraceRecord& record) { return record.text == text; }));
  }

  DOMServices dom_;
};

TEST_F(DOMServicesTest, AValidDocumentIsReadWithoutARecord) {
  UseServiceRecordSchema();
  const auto* document = dom_.GetDocument(ServiceRecord(Service(L"s")));
  EXPECT_EQ(AsWString(document->getDocumentElement()->getTagName()), L"Services");
  EXPECT_FALSE(dom_.ErrorCheck());
  EXPECT_EQ(trace_.Records(), Records{});
}

TEST_F(DOMServicesTest, TheSchemasNameIsMatchedInAnyLetterCase) {
  UseServiceRecordSchema();
  std::wstring text = ServiceRecord(Service(L"s"));
  const std::wstring name = L"serviceRecord.xsd";
  for (const wchar_t* spelling : {L"SERVICERECORD.XSD", L"servicerecord.xsd", L"ServiceRecord.Xsd"}) {
    text.replace(text.find(L"servicerecord ") + 14, name.size(), spelling);
    EXPECT_NE(dom_.GetDocument(text), nullptr);
    EXPECT_FALSE(dom_.ErrorCheck());
  }
  EXPECT_EQ(trace_.Records(), Records{});
}

TEST_F(DOMServicesTest, ATextThatIsTooLargeIsNotReportedWithTheNextDocument) {
  EXPECT_THROW(static_cast<void>(dom_.GetDocument(std::wstring(DomLib::kMaximumDocumentBytes + 1, L'x'))),
               std::runtime_error);
  const std::string broken = "<a";
  const xercesc::MemBufInputSource source(reinterpret_cast<const XMLByte*>(broken.data()), broken.size(), "a",
                                          false);
  EXPECT_NE(dom_.GetDocument(source), nullptr);
  EXPECT_TRUE(dom_.ErrorCheck());
  EXPECT_EQ(trace_.Records().back().text, "");
}

TEST_F(DOMServicesTest, ASchemaErrorIsReportedAndTheDocumentIsReadAllTheSame) {
  UseServiceRecordSchema();
  const std::wstring text = ServiceRecord(L"\n<Unheard/>");
  EXPECT_NE(dom_.GetDocument(text), nullptr);
  EXPECT_TRUE(dom_.ErrorCheck());
  const auto records = trace_.Records();
  ASSERT_GE(records.size(), 4U);
  EXPECT_EQ(records[0], (TraceRecord{2, kDomServicesFile, "Error"}));
  EXPECT_EQ(records[1], (TraceRecord{2, kDomServicesFile, " in [serviceRecord.xsd] at line 2, column 11."}));
  EXPECT_EQ(records[2].level, 2U);
  EXPECT_TRUE(records[2].text.starts_with("    Message:  \"")) << records[2].text;
  EXPECT_TRUE(records[2].text.ends_with("\".")) << records[2].text;
  EXPECT_EQ(records[3], (TraceRecord{2, kDomServicesFile, std::string(text.begin(), text.end())}));
}

TEST_F(DOMServicesTest, TwoErrorsAreTwoReportsAndOneDumpOfTheText) {
  UseServiceRecordSchema();
  const std::wstring text = ServiceRecord(L"<Service type=\"a\"/><Service type=\"b\"/>");
  ASSERT_NE(dom_.GetDocument(text), nullptr);
  EXPECT_GE(Count("Error"), 2U);
  EXPECT_EQ(Count(std::string(text.begin(), text.end())), 1U);
}

TEST_F(DOMServicesTest, OnLaterParsesTheDumpIsEmpty) {
  ASSERT_NE(dom_.GetDocument(L"<a></b>"), nullptr);
  trace_.Clear();
  ASSERT_NE(dom_.GetDocument(L"<a></c>"), nullptr);
  EXPECT_EQ(Count("Fatal"), 1U);
  EXPECT_EQ(Count("<a></c>"), 0U);
  EXPECT_EQ(trace_.Records().back(), (TraceRecord{2, kDomServicesFile, ""}));
}

TEST_F(DOMServicesTest, AParseThatIsCutOffCountsAsAnEarlierParse) {
  EXPECT_THROW(static_cast<void>(dom_.GetDocument(Repeated(L"<a>", 300))), std::runtime_error);
  trace_.Clear();
  ASSERT_NE(dom_.GetDocument(L"<a></c>"), nullptr);
  EXPECT_EQ(Count("<a></c>"), 0U);
  EXPECT_EQ(trace_.Records().back(), (TraceRecord{2, kDomServicesFile, ""}));
}

TEST_F(DOMServicesTest, ASchemaMayBeNamedFirstOnAChild) {
  UseServiceRecordSchema();
  ASSERT_NE(dom_.GetDocument(L"<a>" + ServiceRecord(Service(L"s")) + L"</a>"), nullptr);
  EXPECT_FALSE(dom_.ErrorCheck());
  ASSERT_NE(dom_.GetDocument(L"<a>" + ServiceRecord(L"<Unheard/>") + L"</a>"), nullptr);
  EXPECT_TRUE(dom_.ErrorCheck());
}

TEST_F(DOMServicesTest, AFatalErrorIsWrittenAtItsOwnLevel) {
  ASSERT_NE(dom_.GetDocument(L"<a>"), nullptr);
  EXPECT_TRUE(dom_.ErrorCheck());
  EXPECT_EQ(trace_.Records().front(), (TraceRecord{3, kDomServicesFile, "Fatal"}));
}

TEST_F(DOMServicesTest, WithoutASchemaNameTheReportIsOneLineWithoutAPlace) {
  ASSERT_NE(dom_.GetDocument(L"<a></b>"), nullptr);
  const auto records = trace_.Records();
  ASSERT_EQ(records.size(), 3U);
  EXPECT_EQ(records[1].level, 2U);
  EXPECT_TRUE(records[1].text.starts_with(": \"")) << records[1].text;
  EXPECT_TRUE(records[1].text.ends_with("\".")) << records[1].text;
}

TEST_F(DOMServicesTest, AWarningIsWrittenAndDoesNotCountAsAnError) {
  const std::wstring text = L"<!DOCTYPE a [<!ELEMENT a EMPTY><!ATTLIST unheard b CDATA #IMPLIED>]><a/>";
  ASSERT_NE(dom_.GetDocument(text), nullptr);
  EXPECT_FALSE(dom_.ErrorCheck());
  const auto records = trace_.Records();
  ASSERT_EQ(records.size(), 3U);
  EXPECT_EQ(records[0], (TraceRecord{1, kDomServicesFile, "Warning"}));
  EXPECT_EQ(records[2], (TraceRecord{2, kDomServicesFile, std::string(text.begin(), text.end())}));
}

TEST_F(DOMServicesTest, ErrorsOfTheLastParseAloneCount) {
  ASSERT_NE(dom_.GetDocument(L"<a></b>"), nullptr);
  ASSERT_TRUE(dom_.ErrorCheck());
  ASSERT_NE(dom_.GetDocument(L"<a/>"), nullptr);
  EXPECT_FALSE(dom_.ErrorCheck());
}

TEST_F(DOMServicesTest, AnyOtherSchemaIsOpenedByItsNameFromTheCurrentDirectory) {
  const TemporaryFolder folder;
  std::filesystem::current_path(folder.Path());
  std::ofstream("other.xsd") << "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema' targetNamespace='u'>"
                                "<xs:element name='only'/></xs:schema>";
  UseServiceRecordSchema();
  const std::wstring start =
      L"xmlns='u' xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' "
      L"xsi:schemaLocation='u other.xsd'/>";
  ASSERT_NE(dom_.GetDocument(L"<only " + start), nullptr);
  EXPECT_FALSE(dom_.ErrorCheck());
  ASSERT_NE(dom_.GetDocument(L"<another " + start), nullptr);
  EXPECT_TRUE(dom_.ErrorCheck());
}

TEST_F(DOMServicesTest, WithoutASchemaFileSchemaAndNamespaceProcessingStayOff) {
  dom_.SetSchema(L"serviceRecord.xsd", L"");
  ASSERT_NE(dom_.GetDocument(ServiceRecord(L"<unbound:Unheard/>")), nullptr);
  EXPECT_FALSE(dom_.ErrorCheck());
  EXPECT_EQ(trace_.Records(), Records{});
}

TEST_F(DOMServicesTest, WithoutASchemaFileTheSchemasNameIsTheFile) {
  const TemporaryFolder folder;
  std::filesystem::current_path(folder.Path());
  std::ofstream("names.dtd") << "<!ENTITY e 'found'>";
  dom_.SetSchema(L"names.dtd", L"");
  const auto* document = dom_.GetDocument(L"<!DOCTYPE a SYSTEM 'NAMES.DTD'><a><b>&e;</b></a>");
  EXPECT_EQ(SubNodeText(*document->getDocumentElement(), "b"), L"found");
}

TEST_F(DOMServicesTest, WithASchemaFileNamespacesAreProcessed) {
  UseServiceRecordSchema();
  ASSERT_NE(dom_.GetDocument(L"<unbound:a/>"), nullptr);
  EXPECT_TRUE(dom_.ErrorCheck());
}

TEST_F(DOMServicesTest, ADocumentIsValidatedWhenItDeclaresAGrammar) {
  ASSERT_NE(dom_.GetDocument(L"<!DOCTYPE a [<!ELEMENT a (b)><!ELEMENT b EMPTY>]><a><b/></a>"), nullptr);
  EXPECT_FALSE(dom_.ErrorCheck());
  ASSERT_NE(dom_.GetDocument(L"<!DOCTYPE a [<!ELEMENT a (b)><!ELEMENT b EMPTY>]><a/>"), nullptr);
  EXPECT_TRUE(dom_.ErrorCheck());
}

TEST_F(DOMServicesTest, ADocumentWithoutAGrammarIsNotValidated) {
  ASSERT_NE(dom_.GetDocument(L"<a><b/>text</a>"), nullptr);
  EXPECT_FALSE(dom_.ErrorCheck());
}

TEST_F(DOMServicesTest, EntitiesBecomeTextAndTextBecomesOneNode) {
  const auto* document =
      dom_.GetDocument(L"<!DOCTYPE a [<!ENTITY e 'middle'>]><a><b>front &e;&#32;&amp; back</b></a>");
  EXPECT_EQ(SubNodeText(*document->getDocumentElement(), "b"), L"front middle & back");
  EXPECT_EQ(DomLib::DescendantWalk(*document->getDocumentElement())
                .Next(DomLib::XName("b").Get())
                ->getChildNodes()
                ->getLength(),
            1U);
}

// Which is why a document without entities need not be gone through for them.
TEST_F(DOMServicesTest, NothingButAnEntityLeavesTextsSideBySideOrEmpty) {
  const std::wstring longText(1 << 20, L'x');
  for (const std::wstring& content :
       {longText, L"a&amp;b&#32;c&lt;" + longText + L"&gt;", longText + L"]]&gt;\n\r\n" + longText,
        std::wstring(L"<![CDATA[]]>a<![CDATA[b]]><![CDATA[c]]>d"),
        std::wstring(L"a<!-- -->b<?c d?>e<f/>g<f></f>h"), std::wstring(L"  <f/>  \n")}) {
    const auto* document = dom_.GetDocument(L"<a b='&#9;&amp;c'>" + content + L"</a>");
    ASSERT_NE(document, nullptr);
    for (const auto* node = document->getDocumentElement()->getFirstChild(); node != nullptr;
         node = node->getNextSibling()) {
      if (node->getNodeType() != xercesc::DOMNode::TEXT_NODE) continue;
      EXPECT_NE(*node->getNodeValue(), 0);
      const auto* next = node->getNextSibling();
      EXPECT_TRUE(next == nullptr || next->getNodeType() != xercesc::DOMNode::TEXT_NODE);
    }
  }
}

TEST_F(DOMServicesTest, WhiteSpaceThatTheGrammarCallsIgnorableIsLeftOut) {
  const auto* document =
      dom_.GetDocument(L"<!DOCTYPE a [<!ELEMENT a (b)><!ELEMENT b EMPTY>]><a>\n  <b/>\n</a>");
  EXPECT_EQ(document->getDocumentElement()->getChildNodes()->getLength(), 1U);
}

TEST_F(DOMServicesTest, TheTextIsUtf8WhateverTheDocumentDeclares) {
  const auto* document = dom_.GetDocument(L"<?xml version='1.0' encoding='ISO-8859-1'?><a><b>\u20AC</b></a>");
  EXPECT_EQ(SubNodeText(*document->getDocumentElement(), "b"), L"\u20AC");
  EXPECT_FALSE(dom_.ErrorCheck());
}

TEST_F(DOMServicesTest, AByteOrderMarkAtTheFrontIsAccepted) {
  ASSERT_NE(dom_.GetDocument(L"\uFEFF<a/>"), nullptr);
  EXPECT_FALSE(dom_.ErrorCheck());
}

TEST_F(DOMServicesTest, ASourceInMemoryIsParsedWithoutATextToDump) {
  const std::string text = "<a></b>";
  const xercesc::MemBufInputSource source(reinterpret_cast<const XMLByte*>(text.data()), text.size(),
                                          "named");
  ASSERT_NE(dom_.GetDocument(source), nullptr);
  EXPECT_TRUE(dom_.ErrorCheck());
  const auto records = trace_.Records();
  ASSERT_EQ(records.size(), 4U);
  EXPECT_TRUE(records[1].text.starts_with(" in [named] at line 1, column ")) << records[1].text;
  EXPECT_EQ(records[3].text, "");
}

}  // namespace

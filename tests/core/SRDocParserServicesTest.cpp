#include "core/ParserTest.h"
#include "libs/Text/TextHelpers.h"

#include <xercesc/dom/DOM.hpp>
#include <xercesc/util/RuntimeException.hpp>

#include <functional>
#include <stdexcept>

namespace {

using namespace ServiceRecords;
using namespace TestSupport;

class SRDocParserServicesTest : public ParserTest {};

constexpr char kMissing[] = "SR XML Parsing error: required service element is missing.";

TEST_F(SRDocParserServicesTest, AWholeDocumentIsReadWithNothingButTheClosingRecord) {
  ASSERT_TRUE(Parse(ServiceRecord(
      Service(L"one", L"<Gateways>" + GatewayElement(L"gw", true) +
                          L"</Gateways><Internal><Beacon>https://in" +
                          L"</Beacon></Internal><External><Beacon>https://out</Beacon></External>") +
      Service(L"two"))));
  EXPECT_EQ(ReadingRecords(), Records{});
  EXPECT_EQ(Ids(stores_), (Wide{L"one", L"two"}));
  const SRStore& one = Held(L"one");
  EXPECT_EQ(one.GetStoreName(), L"Name of one");
  EXPECT_EQ(one.GetStoreURL(), L"https://one.example/store/discovery");
  EXPECT_EQ(one.GetSRType(), SRType::store);
  EXPECT_EQ(Names(one.GetGateways()), (Wide{L"gw"}));
  EXPECT_EQ(Locations(one.Beacons(BeaconType::Internal)), (Wide{L"https://in"}));
  EXPECT_EQ(Locations(one.Beacons(BeaconType::External)), (Wide{L"https://out"}));
}

TEST_F(SRDocParserServicesTest, WhatWasInTheMapBeforeIsGone) {
  stores_ = Map({Store(L"old", L"https://old")});
  EXPECT_TRUE(ParseServices(Service(L"new")));
  EXPECT_EQ(Ids(stores_), (Wide{L"new"}));
  EXPECT_FALSE(Parse(L""));
  EXPECT_TRUE(stores_.empty());
}

TEST_F(SRDocParserServicesTest, ADocumentWithoutServicesIsReadAndEmpty) {
  EXPECT_TRUE(Parse(ServiceRecord(L"")));
  EXPECT_TRUE(stores_.empty());
  EXPECT_EQ(ReadingRecords(), Records{});
}

TEST_F(SRDocParserServicesTest, ServicesAreFoundAtAnyDepthUnderAnyRoot) {
  EXPECT_TRUE(
      Parse(L"<anything><group>" + Service(L"deep") + L"</group>" + Service(L"shallow") + L"</anything>"));
  EXPECT_EQ(Ids(stores_), (Wide{L"deep", L"shallow"}));
}

TEST_F(SRDocParserServicesTest, TheRootItselfIsNoServiceOfItsOwn) {
  EXPECT_TRUE(Parse(Service(L"root")));
  EXPECT_TRUE(stores_.empty());
}

TEST_F(SRDocParserServicesTest, NamesOfElementsAreCaseSensitive) {
  EXPECT_TRUE(
      ParseServices(L"<service type='store'><SRID>i</SRID><Name>n</Name><Address>a</Address></service>"));
  EXPECT_TRUE(stores_.empty());
}

TEST_F(SRDocParserServicesTest, ALaterServiceWithTheSameIdReplacesTheEarlierWholly) {
  ASSERT_TRUE(ParseServices(Service(L"same", L"<Gateways>" + GatewayElement(L"gw") + L"</Gateways>") +
                            L"<Service type='store'><SRID>same</SRID><Name>second</Name>"
                            L"<Address>https://second</Address></Service>"));
  EXPECT_EQ(Ids(stores_), (Wide{L"same"}));
  EXPECT_EQ(Held(L"same").GetStoreName(), L"second");
  EXPECT_TRUE(Held(L"same").GetGateways().empty());
}

TEST_F(SRDocParserServicesTest, IdsThatDifferInLetterCaseAreDifferentStores) {
  ASSERT_TRUE(ParseServices(Service(L"a") + Service(L"A")));
  EXPECT_EQ(Ids(stores_), (Wide{L"A", L"a"}));
}

TEST_F(SRDocParserServicesTest, AMissingElementEndsTheReadingAndTheResultIsStillTrue) {
  const std::wstring id = L"<SRID>i</SRID>";
  const std::wstring name = L"<Name>n</Name>";
  const std::wstring address = L"<Address>a</Address>";
  for (const std::wstring& broken :
       {L"<Service type='store'>" + name + address + L"</Service>",
        L"<Service type='store'>" + id + address + L"</Service>",
        L"<Service type='store'>" + id + name + L"</Service>",
        L"<Service>" + id + name + address + L"</Service>",
        L"<Service type=''>" + id + name + address + L"</Service>",
        L"<Service type='store'><SRID> </SRID>" + name + address + L"</Service>"}) {
    EXPECT_TRUE(ParseServices(Service(L"before") + broken + Service(L"behind")));
    EXPECT_EQ(Ids(stores_), (Wide{L"before"}));
    EXPECT_EQ(ReadingRecords(), (Records{{2, kDocParserFile, kMissing}}));
  }
}

TEST_F(SRDocParserServicesTest, TextsAreTrimmedAndCharacterDataStandsAsItIs) {
  ASSERT_TRUE(
      ParseServices(L"<Service type='store'><SRID>\n i \n</SRID><Name><![CDATA[ n ]]></Name>"
                    L"<Address> https://a </Address></Service>"));
  EXPECT_EQ(Held(L"i").GetStoreName(), L" n ");
  EXPECT_EQ(Held(L"i").GetStoreURL(), L"https://a");
}

TEST_F(SRDocParserServicesTest, ADocumentThatFailsItsSchemaIsReadAllTheSame) {
  const std::wstring text = ServiceRecord(L"<Unheard/>" + Service(L"s"));
  EXPECT_TRUE(Parse(text));
  EXPECT_EQ(Ids(stores_), (Wide{L"s"}));
  const Records reading = ReadingRecords();
  ASSERT_GE(reading.size(), 3U);
  EXPECT_EQ(
      Records(reading.end() - 3, reading.end()),
      (Records{{2, kDocParserFile, "Errors Detected during schema validation of ServiceRecords document"},
               {2, kDocParserFile, "Invalid document contents: "},
               {2, kDocParserFile, std::string(text.begin(), text.end())}}));
}

TEST_F(SRDocParserServicesTest, ADocumentThatBreaksOffIsReadUpToThere) {
  EXPECT_TRUE(Parse(L"<Services>" + Service(L"s") + L"<Service"));
  EXPECT_EQ(Ids(stores_), (Wide{L"s"}));
}

TEST_F(SRDocParserServicesTest, TextWithoutARootElementFails) {
  for (const wchar_t* text : {L"", L"no document", L"<!-- nothing -->"}) {
    EXPECT_FALSE(Parse(text));
    EXPECT_TRUE(stores_.empty());
    EXPECT_TRUE(trace_.RecordsStartingWith("No Errors Detected").empty());
  }
}

// Calls the virtual step itself; Deserialize does not look at its result.
class StructureTest : public ParserTest {
 protected:
  template <class Parser>
  bool Structure(const std::wstring& document) {
    stores_.clear();
    DOMServices dom;
    dom.SetSchema(L"unnamed", L"servicerecord.xsd");  // for the namespaces
    return Parser().DeserializeDocStructure(*dom.GetDocument(document)->getDocumentElement(), stores_);
  }

  template <class Parser>
  void ExpectResults() {
    const std::wstring attributes = InServiceRecordNamespace();
    const std::wstring good = Service(L"good", L"", attributes);
    const std::wstring badList = Service(L"bad", L"<Internal><Beacon/></Internal>", attributes);
    EXPECT_TRUE(Structure<Parser>(L"<a/>"));
    EXPECT_TRUE(Structure<Parser>(L"<a>" + good + L"</a>"));
    EXPECT_EQ(Ids(stores_), (Wide{L"good"}));
    EXPECT_TRUE(Structure<Parser>(L"<a>" + good + badList + L"</a>"));
    EXPECT_EQ(Ids(stores_), (Wide{L"good"}));
    EXPECT_FALSE(Structure<Parser>(L"<a>" + good + L"<Service" + attributes + L"/></a>"));
    EXPECT_EQ(Ids(stores_), (Wide{L"good"}));
  }
};

TEST_F(StructureTest, OnlyAMissingElementMakesTheStepFail) {
  ExpectResults<SRDocParser>();
  ExpectResults<DiscoveryDocParser>();
}

// A list that is longer than what it gives out.
struct ListWithoutItems : xercesc::DOMNodeList {
  [[nodiscard]] xercesc::DOMNode* item(XMLSize_t /*index*/) const override { return nullptr; }
  [[nodiscard]] XMLSize_t getLength() const override { return 1; }
};

struct ParserOfLists : SRDocParser {
  using SRDocParser::DeserializeServiceNodes;
};

TEST_F(StructureTest, AnItemThatIsMissingInTheListMakesTheStepFail) {
  EXPECT_FALSE(ParserOfLists().DeserializeServiceNodes(ListWithoutItems(), stores_));
}

class SurrogatesTest : public ParserTest {};

TEST_F(SurrogatesTest, CharactersBeyondSixteenBitsAreDroppedWhenTheTextLeaves) {
  ASSERT_TRUE(
      ParseServices(L"<Service type='store'><SRID>s</SRID><Name>a \U0001F3EA b</Name>"
                    L"<Address>https://a/\U0001F3EA</Address><Internal><Beacon>https://\U0001F3EA.b"
                    L"</Beacon></Internal></Service>"));
  EXPECT_EQ(util::narrow(Held(L"s").GetStoreName()), "a  b");
  EXPECT_EQ(util::narrow(Held(L"s").GetStoreURL()), "https://a/");
  EXPECT_EQ(util::narrow(Locations(Held(L"s").Beacons(BeaconType::Internal)).front()), "https://.b");
}

// Puts one store into the map and then throws.
class ThrowingParser : public SRDocParser {
 public:
  explicit ThrowingParser(std::function<void()> failure) : failure_(std::move(failure)) {}
  bool DeserializeDocStructure(const xercesc::DOMElement& root, StoreMap& out) override {
    static_cast<void>(SRDocParser::DeserializeDocStructure(root, out));
    failure_();
    return true;
  }

 private:
  const std::function<void()> failure_;
};

class ExceptionTest : public ParserTest {
 protected:
  // The last record of a document whose reading fails so.
  TraceRecord FailingWith(const std::function<void()>& failure) {
    trace_.Clear();
    EXPECT_FALSE(ThrowingParser(failure).Deserialize(L"<a>" + Service(L"s") + L"</a>", stores_));
    EXPECT_EQ(Ids(stores_), (Wide{L"s"}));
    EXPECT_EQ(trace_.Records().size(), 1U);
    return trace_.Records().back();
  }
};

TEST_F(ExceptionTest, ARuntimeErrorIsOneLineWithItsText) {
  EXPECT_EQ(FailingWith([] { throw std::runtime_error("why"); }),
            (TraceRecord{2, kDocParserFile, "Exception parsing document containning Service Records: why"}));
}

TEST_F(ExceptionTest, AnExceptionOfTheXmlLibraryIsOneLineWithItsMessage) {
  const TraceRecord record = FailingWith([] {
    throw xercesc::RuntimeException(__FILE__, __LINE__, xercesc::XMLExcepts::Pool_ElemAlreadyExists);
  });
  EXPECT_EQ(record.level, 2U);
  EXPECT_TRUE(record.text.starts_with("XMLException parsing document containning Service Records: "));
  EXPECT_GT(record.text.size(),
            std::string("XMLException parsing document containning Service Records: ").size());
}

TEST_F(ExceptionTest, AnExceptionOfTheDocumentIsOneLineWithItsMessage) {
  const TraceRecord record =
      FailingWith([] { throw xercesc::DOMException(xercesc::DOMException::NOT_FOUND_ERR, 0); });
  EXPECT_EQ(record.level, 2U);
  EXPECT_TRUE(record.text.starts_with("DOMException parsing document containning Service Records: "));
  EXPECT_GT(record.text.size(),
            std::string("DOMException parsing document containning Service Records: ").size());
}

TEST_F(ExceptionTest, AnythingElseIsOneLineWithoutAText) {
  const TraceRecord expected{2, kDocParserFile,
                             "Unexpected Exception parsing document containning Service Records: "};
  EXPECT_EQ(FailingWith([] { throw "Null attribute value."; }), expected);
  EXPECT_EQ(FailingWith([] { throw std::logic_error("why"); }), expected);
}

}  // namespace

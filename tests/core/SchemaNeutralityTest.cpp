#include "core/ParserTest.h"

namespace {

using namespace ServiceRecords;
using namespace TestSupport;

// White space wherever a document may have it.
constexpr wchar_t kSpacedService[] =
    L"\n  <Service type=\"store\">\n\t<SRID>  i  d\t</SRID>\n <Name>\n a  name \n</Name>"
    L"<Address> <![CDATA[  https://s  ]]> </Address>\n"
    L"  <Gateways>\n <Gateway Name=\"  g  w \" Edition=\"Enterprise\" Auth=\"Domain\" RewriteMode=\"SG_RW\" "
    L"Default=\"true\">\n <Location>\n https://g w \n</Location> </Gateway>\n"
    L" <Gateway Name=\"line&#10;break&#9;tab\" Edition=\"Standard\" Auth=\"None\" RewriteMode=\"NONE\" "
    L"Default=\" true \">"
    L"<Location>https://<!-- note -->two</Location></Gateway>\n</Gateways>\n"
    L"  <Internal> <Beacon>  in  one </Beacon>\n<Beacon>\n</Beacon> </Internal>"
    L"<External>\n<Beacon><![CDATA[ out ]]></Beacon></External>\n  </Service>\n";

class SchemaNeutralityTest : public ParserTest {
 protected:
  // All that was read from the document, as it would be saved.
  template <class Parser>
  Wide Read(const std::wstring& document) {
    configuration_.Clear();
    EXPECT_TRUE(Parse<Parser>(document));
    EXPECT_EQ(stores_.size(), 1U);
    Repository().SaveStores(stores_);
    return configuration_.Dump();
  }

  bool WasValidated() { return !trace_.RecordsStartingWith("Errors Detected").empty(); }
};

TEST_F(SchemaNeutralityTest, ValidatingAServiceRecordChangesNothingThatIsRead) {
  const Wide validated = Read<SRDocParser>(ServiceRecord(kSpacedService));
  EXPECT_TRUE(WasValidated());
  const Wide unvalidated = Read<SRDocParser>(std::wstring(L"<Services>") + kSpacedService + L"</Services>");
  EXPECT_FALSE(WasValidated());
  EXPECT_EQ(validated, unvalidated);
}

TEST_F(SchemaNeutralityTest, ValidatingADiscoveryDocumentChangesNothingThatIsRead) {
  std::wstring service = kSpacedService;
  service.replace(service.find(L"<Service "), 9, L"<Service" + InServiceRecordNamespace() + L" ");
  const Wide validated = Read<DiscoveryDocParser>(DiscoveryDocument(service));
  EXPECT_TRUE(WasValidated());
  const Wide unvalidated = Read<DiscoveryDocParser>(L"<Discovery>" + service + L"</Discovery>");
  EXPECT_FALSE(WasValidated());
  EXPECT_EQ(validated, unvalidated);
}

TEST_F(SchemaNeutralityTest, WhiteSpaceInsideValuesIsKept) {
  ASSERT_TRUE(Parse(ServiceRecord(kSpacedService)));
  const SRStore& store = Held(L"i  d");
  EXPECT_EQ(store.GetStoreName(), L"a  name");
  EXPECT_EQ(store.GetStoreURL(), L"  https://s  ");
  EXPECT_EQ(Names(store.GetGateways()), (Wide{L"  g  w ", L"line\nbreak\ttab"}));
  EXPECT_EQ(Marked(store.GetGateways()), (Wide{L"  g  w "}));
  EXPECT_EQ(Locations(store.Beacons(BeaconType::Internal)), (Wide{L"in  one"}));
  EXPECT_EQ(Locations(store.Beacons(BeaconType::External)), (Wide{L"out"}));
}

}  // namespace

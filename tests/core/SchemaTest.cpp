#include "core/ParserTest.h"

#include <algorithm>
#include <string>
#include <vector>

namespace {

using namespace ServiceRecords;
using namespace TestSupport;

// What the two schemas allow and what they report.
class SchemaTest : public ParserTest {
 protected:
  template <class Parser>
  void ExpectSilence(const std::wstring& document) {
    EXPECT_TRUE(Parse<Parser>(document)) << document;
    EXPECT_EQ(ReadingRecords(), Records{}) << document;
  }

  template <class Parser>
  void ExpectReport(const std::wstring& document) {
    EXPECT_TRUE(Parse<Parser>(document)) << document;
    EXPECT_EQ(trace_.RecordsStartingWith("Errors Detected during schema validation").size(), 1U) << document;
  }

  // Services stand in both kinds of document.
  void ExpectAllowed(const std::wstring& services) {
    ExpectSilence<SRDocParser>(ServiceRecord(services));
    ExpectSilence<DiscoveryDocParser>(DiscoveryDocument(OfServiceRecords(services)));
  }

  void ExpectViolation(const std::wstring& services) {
    ExpectReport<SRDocParser>(ServiceRecord(services));
    ExpectReport<DiscoveryDocParser>(DiscoveryDocument(OfServiceRecords(services)));
  }

  // A service with this instead of one of its parts: none for nothing.
  static std::wstring With(const std::wstring& part, const std::wstring& replacement) {
    std::wstring service = kService;
    service.replace(service.find(part), part.size(), replacement);
    return service;
  }

  // A gateway with this instead of one of its parts, in a service.
  static std::wstring WithGateway(const std::wstring& part, const std::wstring& replacement) {
    std::wstring gateway = kGateway;
    gateway.replace(gateway.find(part), part.size(), replacement);
    return With(kLists, L"<Gateways>" + gateway + L"</Gateways>");
  }

  static std::wstring OfServiceRecords(std::wstring services) {
    const std::wstring start = L"<Service";
    for (std::size_t at = services.find(start); at != std::wstring::npos; at = services.find(start, at + 1))
      services.insert(at + start.size(), InServiceRecordNamespace());
    return services;
  }

  inline static const std::wstring kLists = L"<Gateways/><Internal/><External/>";
  inline static const std::wstring kService =
      L"<Service type='store'><SRID>i</SRID><Name>n</Name><Address>a</Address>" + kLists + L"</Service>";
  inline static const std::wstring kGateway =
      L"<Gateway Name='g' Edition='Standard' Auth='None' RewriteMode='NONE' Default='true'>"
      L"<Location>l</Location></Gateway>";
};

TEST_F(SchemaTest, AnyNumberOfServicesMayStandInADocument) {
  ExpectAllowed(L"");
  ExpectAllowed(kService);
  ExpectAllowed(L"\n" + kService + L"\n<!-- two -->\n" + kService + L"\n");
}

TEST_F(SchemaTest, TheRootHasNothingButServices) {
  ExpectReport<SRDocParser>(ServiceRecord(L"text"));
  ExpectReport<SRDocParser>(ServiceRecord(kService + L"<Gateways/>"));
  ExpectReport<SRDocParser>(ServiceRecord(kService + L"<other xmlns='urn:other'/>"));
  for (const wchar_t* attribute : {L"unheard='1'", L"xmlns:x='urn:other' x:unheard='1'"}) {
    std::wstring document = ServiceRecord(kService);
    document.insert(document.find(L" xmlns"), std::wstring(L" ") + attribute);
    ExpectReport<SRDocParser>(document);
  }
}

TEST_F(SchemaTest, TheRootIsOfItsDocumentsKind) {
  std::wstring document = ServiceRecord(L"");
  document.replace(document.find(L"<Services"), 9, L"<Records");
  document.replace(document.find(L"</Services"), 10, L"</Records");
  ExpectReport<SRDocParser>(document);
  document = DiscoveryDocument(L"");
  document.replace(document.find(L"<Discovery"), 10, L"<Found");
  document.replace(document.find(L"</Discovery"), 11, L"</Found");
  ExpectReport<DiscoveryDocParser>(document);
}

TEST_F(SchemaTest, TheElementsOfAServiceStandInAnyOrder) {
  Wide parts{L"<Address>a</Address>", L"<External/>",    L"<Gateways/>",
             L"<Internal/>",          L"<Name>n</Name>", L"<SRID>i</SRID>"};
  std::wstring services;
  do {
    services += L"<Service type='store'>";
    for (const std::wstring& part : parts) services += part;
    services += L"</Service>";
  } while (std::next_permutation(parts.begin(), parts.end()));
  ExpectAllowed(services);
}

TEST_F(SchemaTest, TheListsOfAServiceMayBeMissing) {
  ExpectAllowed(With(kLists, L""));
  for (const wchar_t* lists : {L"<Gateways/>", L"<Internal/>", L"<External/>", L"<Gateways/><Internal/>",
                               L"<Gateways/><External/>", L"<Internal/><External/>"})
    ExpectAllowed(With(kLists, lists));
}

TEST_F(SchemaTest, EveryRequiredElementIsThereOnceAndNotBlank) {
  for (const std::wstring name : {L"SRID", L"Name", L"Address"}) {
    const std::wstring start = L"<" + name + L">";
    const std::wstring end = L"</" + name + L">";
    std::wstring whole = kService.substr(0, kService.find(end) + end.size());
    whole.erase(0, whole.find(start));
    ExpectViolation(With(whole, L""));
    ExpectViolation(With(whole, whole + whole));
    for (const wchar_t* blank : {L"", L" ", L"\n\t", L"<b>text</b>"})
      ExpectViolation(With(whole, start + blank + end));
    for (const wchar_t* text : {L"x", L" x", L"x ", L"x y", L"\n x\n y \n", L"<![CDATA[ x ]]>", L"\u20AC"})
      ExpectAllowed(With(whole, start + text + end));
    ExpectViolation(With(whole, L"<" + name + L" unheard='1'>x" + end));
  }
}

TEST_F(SchemaTest, AServiceHasNothingElse) {
  for (const wchar_t* more : {L"text", L"<Unheard/>", L"<other xmlns='urn:other'/>", L"<Gateways/>",
                              L"<Internal/>", L"<External/>", L"<Gateway/>", L"<Beacon>b</Beacon>"})
    ExpectViolation(With(kLists, kLists + more));
  ExpectViolation(With(L"type='store'", L"type='store' unheard='1'"));
  ExpectViolation(With(L"type='store'", L"type='store' xmlns:x='urn:other' x:unheard='1'"));
}

TEST_F(SchemaTest, TheTypeIsStoreInAnyLetterCase) {
  for (unsigned spelling = 0; spelling < 32; ++spelling) {
    std::wstring type = L"store";
    for (unsigned letter = 0; letter < 5; ++letter) {
      if ((spelling >> letter & 1U) != 0) type[letter] = static_cast<wchar_t>(type[letter] - L'a' + L'A');
    }
    ExpectAllowed(With(L"type='store'", L"type='" + type + L"'"));
  }
  ExpectViolation(With(L"type='store'", L""));
}

TEST_F(SchemaTest, AnyOtherTypeIsReported) {
  for (const wchar_t* type :
       {L"", L"stor", L"tore", L"stores", L" store", L"store ", L"desktop", L"s t o r e"})
    ExpectViolation(With(L"type='store'", std::wstring(L"type='") + type + L"'"));
}

TEST_F(SchemaTest, AListHasAnyNumberOfItsItemsAndNothingElse) {
  const std::wstring beacon = L"<Beacon>b</Beacon>";
  for (const auto& [list, item] :
       {std::pair(L"Gateways", kGateway), std::pair(L"Internal", beacon), std::pair(L"External", beacon)}) {
    const std::wstring start = std::wstring(L"<") + list;
    const std::wstring end = std::wstring(L"</") + list + L">";
    const std::wstring empty = start + L"/>";
    for (const std::wstring& items : {std::wstring(), item, item + L"\n" + item, item + item + item})
      ExpectAllowed(With(empty, start + L">" + items + end));
    const std::wstring foreign = item == beacon ? kGateway : beacon;
    for (const std::wstring& more : {std::wstring(L"text"), std::wstring(L"<Unheard/>"), foreign})
      ExpectViolation(With(empty, start + L">" + item + more + end));
    ExpectViolation(With(empty, start + L" unheard='1'>" + end));
  }
}

TEST_F(SchemaTest, ABeaconIsNotBlank) {
  for (const wchar_t* list : {L"Internal", L"External"}) {
    const std::wstring name = list;
    for (const wchar_t* blank : {L"", L" ", L"\n", L"<b>text</b>"})
      ExpectViolation(
          With(L"<" + name + L"/>", L"<" + name + L"><Beacon>" + blank + L"</Beacon></" + name + L">"));
    ExpectAllowed(With(L"<" + name + L"/>", L"<" + name + L"><Beacon>\n b \n</Beacon></" + name + L">"));
    ExpectViolation(
        With(L"<" + name + L"/>", L"<" + name + L"><Beacon unheard='1'>b</Beacon></" + name + L">"));
  }
}

TEST_F(SchemaTest, AGatewayHasOneLocationThatIsNotBlank) {
  const std::wstring location = L"<Location>l</Location>";
  for (const std::wstring& wrong : {std::wstring(), location + location, std::wstring(L"<Location/>"),
                                    std::wstring(L"<Location> </Location>"), location + L"<Unheard/>",
                                    location + L"text", location + L"<Beacon>b</Beacon>"})
    ExpectViolation(WithGateway(location, wrong));
  ExpectAllowed(WithGateway(location, L"\n<Location>\n l \n</Location>\n"));
}

TEST_F(SchemaTest, AGatewayHasAllAttributesButItsMark) {
  for (const wchar_t* attribute : {L"Name='g'", L"Edition='Standard'", L"Auth='None'", L"RewriteMode='NONE'"})
    ExpectViolation(WithGateway(attribute, L""));
  ExpectAllowed(WithGateway(L"Default='true'", L""));
  ExpectViolation(WithGateway(L"Default='true'", L"unheard='true'"));
  ExpectViolation(WithGateway(L"Name='g'", L"Name=''"));
  ExpectViolation(WithGateway(L"Name='g'", L"Name=' '"));
  ExpectAllowed(WithGateway(L"Name='g'", L"Name=' g h '"));
}

struct GatewayAttribute {
  std::wstring name;
  std::wstring value;  // of the gateway that the others are made from
  std::vector<std::wstring> allowed;
  std::vector<std::wstring> wrong;
};

TEST_F(SchemaTest, TheValuesOfAGatewayAreThoseThatAreRead) {
  const GatewayAttribute attributes[] = {
      {L"Edition", L"Standard", {L"Standard", L"Advanced", L"Enterprise"}, {L"standard", L"ENTERPRISE"}},
      {L"Auth",
       L"None",
       {L"RSA", L"None", L"Domain", L"DomainAndRSA", L"SMS", L"GatewayKnows"},
       {L"rsa", L"NONE", L"domain", L"Sms"}},
      {L"RewriteMode", L"NONE", {L"NONE", L"SG_RW", L"FB_RW", L"ENTCVPN_RW"}, {L"None", L"sg_rw"}},
      {L"Default", L"true", {L"true", L"false", L"1", L"0"}, {L"True", L"TRUE", L"yes", L"2", L"01"}}};
  for (const auto& [name, value, allowed, wrong] : attributes) {
    const std::wstring start = name + L"='";
    for (const std::wstring& spelling : allowed) {
      ExpectAllowed(WithGateway(start + value + L"'", start + spelling + L"'"));
      ExpectViolation(WithGateway(start + value + L"'", start + L" " + spelling + L"'"));
      ExpectViolation(WithGateway(start + value + L"'", start + spelling + L" '"));
    }
    for (const std::wstring& spelling : wrong)
      ExpectViolation(WithGateway(start + value + L"'", start + spelling + L"'"));
    ExpectViolation(WithGateway(start + value + L"'", start + L"'"));
  }
}

TEST_F(SchemaTest, ElementsAndAttributesOfFurtherNamespacesStandInADiscoveryDocument) {
  const std::wstring service = OfServiceRecords(kService);
  for (const std::wstring& foreign : {std::wstring(L"<x:y xmlns:x='urn:other' z='1'>text<x:y/></x:y>"),
                                      L"<y xmlns='urn:other'>" + service + L"</y>"}) {
    ExpectSilence<DiscoveryDocParser>(DiscoveryDocument(foreign));
    ExpectSilence<DiscoveryDocParser>(DiscoveryDocument(foreign + service + foreign + service));
  }
  std::wstring document = DiscoveryDocument(service);
  document.insert(document.find(L" xmlns"), L" xmlns:x='urn:other' x:y='1' xmlns:z='urn:another' z:y='1'");
  ExpectSilence<DiscoveryDocParser>(document);
}

TEST_F(SchemaTest, ADiscoveryDocumentHasNothingElse) {
  const std::wstring service = OfServiceRecords(kService);
  for (const wchar_t* more : {L"text", L"<Unheard/>", L"<Discovery/>", L"<Unheard xmlns=''/>"})
    ExpectReport<DiscoveryDocParser>(DiscoveryDocument(service + more));
  for (const wchar_t* attribute : {L"unheard='1'", L"xmlns:d='urn:morvane:discovery' d:unheard='1'"}) {
    std::wstring document = DiscoveryDocument(service);
    document.insert(document.find(L" xmlns"), std::wstring(L" ") + attribute);
    ExpectReport<DiscoveryDocParser>(document);
  }
}

}  // namespace

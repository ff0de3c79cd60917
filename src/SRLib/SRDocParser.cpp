#include "SRLib/SRDocParser.h"

#include "libs/DomLib/DescendantWalk.h"
#include "libs/DomLib/DocumentBounds.h"
#include "libs/DomLib/XercesUtils.h"
#include "libs/Text/TextHelpers.h"
#include "libs/Trace/Trace.h"

#include <xercesc/dom/DOM.hpp>
#include <xercesc/util/XMLException.hpp>
#include <xercesc/util/XMLString.hpp>
#include <xercesc/validators/schema/SchemaSymbols.hpp>

#include <algorithm>
#include <stdexcept>
#include <typeinfo>
#include <utility>
#include <vector>

using namespace xercesc;

namespace ServiceRecords {
namespace {

const DOMElement* AsElement(const DOMNode* node) {
  const bool isElement = node != nullptr && node->getNodeType() == DOMNode::ELEMENT_NODE;
  return isElement ? static_cast<const DOMElement*>(node) : nullptr;
}

bool IsGateway(const DOMNode& node) {
  static const DomLib::XString name = AsXString("Gateway");
  return DomLib::AreSameName(node.getNodeName(), name.c_str());
}

// Why the text cannot be read; empty when it can.
std::string ProblemWithLength(const std::wstring& text, const char* what) {
  if (text.size() <= DomLib::kMaximumTextCharacters) return {};
  return std::string(what) + " has more than " + std::to_string(DomLib::kMaximumTextCharacters) +
         " characters.";
}

bool CannotBeKey(wchar_t character) {
  const bool isSurrogate = character >= 0xD800 && character <= 0xDFFF;
  return character == L'\\' || isSurrogate || util::IsControl(character) || util::IsNoncharacter(character);
}

// Ids and gateway names are keys of the configuration, where a backslash separates, and of calls on the bus;
// one that changed on its way there would reach its neighbour.
std::string ProblemWithKey(const std::wstring& text, const char* what) {
  if (std::none_of(text.begin(), text.end(), CannotBeKey)) return ProblemWithLength(text, what);
  return std::string(what) + " holds a backslash or a character that is no text.";
}

std::wstring UpperCase(std::wstring text) {
  std::transform(text.begin(), text.end(), text.begin(), [](wchar_t character) {
    return character >= L'a' && character <= L'z' ? static_cast<wchar_t>(character - L'a' + L'A') : character;
  });
  return text;
}

template <class Value>
struct Spelling {
  const wchar_t* text;
  Value value;
};

// The value of the first spelling that equals the text; null when there is none.
template <class Value, std::size_t Count>
const Value* Spelled(const Spelling<Value> (&spellings)[Count], const std::wstring& text) {
  const auto match = std::find_if(std::begin(spellings), std::end(spellings),
                                  [&text](const Spelling<Value>& spelling) { return text == spelling.text; });
  return match == std::end(spellings) ? nullptr : &match->value;
}

}  // namespace

// The services below an element, searched for as they are asked for: a service is read while what the search
// has touched of it is still at hand. One search goes to the end of the next service that lies in no other.
class SRDocParser::ServiceList : public DOMNodeList {
 public:
  ServiceList(SRDocParser& parser, const DOMElement& root)
      : parser_(parser), walk_(root), levels_{parser.IsLevel(root) ? 1U : 0U} {}

  // Null behind the last one.
  [[nodiscard]] DOMNode* item(XMLSize_t index) const override {
    while (index >= complete_ && Advance()) continue;
    return index < services_.size() ? const_cast<DOMElement*>(services_[index]) : nullptr;
  }
  [[nodiscard]] XMLSize_t getLength() const override {
    while (Advance()) continue;
    return services_.size();
  }

 private:
  // Goes one element further; false at the end.
  bool Advance() const {
    const DOMElement* element = walk_.Next();
    if (element == nullptr || walk_.Depth() <= outermost_) Complete();
    if (element != nullptr) Take(*element);
    return element != nullptr;
  }

  void Complete() const {
    complete_ = services_.size();
    if (outermost_ != 0) std::swap(parser_.below_, below_);
    outermost_ = 0;
  }

  void Take(const DOMElement& element) const {
    if (outermost_ != 0) below_.elements.Add(element, walk_.Depth());
    const bool isService = parser_.IsService(element);
    levels_.resize(walk_.Depth());
    levels_.push_back(levels_.back() + (isService || IsGateway(element) ? 1 : 0));
    parser_.deepestLevel_ = std::max(parser_.deepestLevel_, levels_.back());
    if (!isService) return;
    services_.push_back(&element);
    if (outermost_ != 0) return;
    outermost_ = walk_.Depth();
    below_.service = &element;
    below_.elements.Clear();
  }

  SRDocParser& parser_;
  mutable DomLib::DescendantWalk walk_;
  mutable std::vector<std::size_t> levels_;  // of services and gateways, from the root down to the element
  mutable std::vector<const DOMElement*> services_;
  mutable std::size_t complete_ = 0;   // how many of them have been walked through
  mutable std::size_t outermost_ = 0;  // the depth of the service that is being walked through; 0 for none
  mutable BelowService below_;         // of that service, so far
};

void SRDocParser::ReportTo(DomLib::ProblemReport report) {
  domServices_.ReportTo(report);
  report_ = std::move(report);
}

bool SRDocParser::Accepts(const std::string& problem) const {
  return problem.empty() || Refuse(problem);
}

bool SRDocParser::Refuse(const std::string& problem) const {
  SR_TRACE(2) << "SR XML Parsing error: " << problem;
  ReportEnd(problem);
  return false;
}

void SRDocParser::ReportEnd(const std::string& reason) const {
  if (report_) report_({.gravity = DomLib::DocumentProblem::Gravity::Fatal, .text = reason});
}

void SRDocParser::SetSchema() {
  domServices_.SetSchema(L"serviceRecord.xsd", L"servicerecord.xsd");
}

bool SRDocParser::Deserialize(const std::wstring& text, StoreMap& out) {
  out.clear();
  SetSchema();
  try {
    const DOMElement* root = GetServicesElem(text);
    if (root == nullptr) return false;
    // What was collected stays, whatever the result.
    static_cast<void>(DeserializeDocStructure(*root, out));
    SR_TRACE(0) << "No Errors Detected";
    return true;
  } catch (const std::runtime_error& exception) {
    SR_TRACE(2) << "Exception parsing document containning Service Records: " << exception.what();
    ReportEnd(exception.what());
  } catch (const XMLException& exception) {
    SR_TRACE(2) << "XMLException parsing document containning Service Records: "
                << AsWString(exception.getMessage());
    ReportEnd(util::narrow(AsWString(exception.getMessage())));
  } catch (const DOMException& exception) {
    SR_TRACE(2) << "DOMException parsing document containning Service Records: "
                << AsWString(exception.getMessage());
    ReportEnd(util::narrow(AsWString(exception.getMessage())));
  } catch (...) {
    SR_TRACE(2) << "Unexpected Exception parsing document containning Service Records: ";
    ReportEnd("it failed for a reason that is not known");
  }
  return false;
}

const DOMElement* SRDocParser::GetServicesElem(const std::wstring& text) {
  document_ = domServices_.GetDocument(text);
  if (domServices_.ErrorCheck()) {
    const bool isServiceRecord = typeid(*this) == typeid(SRDocParser);
    SR_TRACE(2) << "Errors Detected during schema validation of "
                << (isServiceRecord ? "ServiceRecords" : "Discovery") << " document";
    SR_TRACE(2) << "Invalid document contents: ";
    SR_TRACE(2) << text;
  }
  // The document is read all the same, as far as the rules below allow.
  return Root();
}

const DOMElement* SRDocParser::Root() const {
  return document_ == nullptr ? nullptr : document_->getDocumentElement();
}

std::wstring SRDocParser::RootName() const {
  return Root() == nullptr ? std::wstring() : AsWString(Root()->getNodeName());
}

bool SRDocParser::NamesSchema() const {
  return Root() != nullptr &&
         Root()->hasAttributeNS(SchemaSymbols::fgURI_XSI, DomLib::XName("schemaLocation").Get());
}

bool SRDocParser::DeserializeDocStructure(const DOMElement& root, StoreMap& out) {
  deepestLevel_ = 0;
  below_.service = nullptr;
  return DeserializeServiceNodes(ServiceList(*this, root), out);
}

bool SRDocParser::DeserializeServiceNodes(const DOMNodeList& services, StoreMap& out) {
  XMLSize_t index = 0;
  for (; DOMNode* node = services.item(index); ++index) {
    if (AsElement(node) == nullptr) continue;
    auto& service = static_cast<DOMElement&>(*node);
    RefuseDeepNesting(service);
    const DomLib::Descendants& below = Below(service);
    SRStore store;
    if (!DeserializeService(service, below, store)) return false;
    // A bad list ends the document without making it a failure, unlike a missing element: deliberate.
    if (!DeserializeGateways(below, store) || !DeserializeBeacons(below, store, BeaconType::Internal) ||
        !DeserializeBeacons(below, store, BeaconType::External)) {
      return true;
    }
    std::wstring id = store.GetStoreID();
    out.insert_or_assign(std::move(id), std::move(store));
  }
  return index == services.getLength();
}

const DomLib::Descendants& SRDocParser::Below(const DOMElement& service) {
  // Whoever lists the services has gone through those below the outermost one already.
  if (below_.service != &service) {
    below_.elements.Gather(service);
    below_.service = &service;
  }
  return below_.elements;
}

bool SRDocParser::IsService(const DOMNode& node) const {
  static const DomLib::XString name = AsXString("Service");
  if (serviceNamespace_.empty()) return DomLib::AreSameName(node.getNodeName(), name.c_str());
  return XMLString::equals(node.getLocalName(), name.c_str()) &&
         XMLString::equals(node.getNamespaceURI(), serviceNamespace_.c_str());
}

// Services and gateways inside one another share what the innermost holds, so each level costs as much again
// as the whole document. What this parser reads as one of them is a level, and nothing else.
bool SRDocParser::IsLevel(const DOMNode& node) const {
  return IsService(node) || IsGateway(node);
}

void SRDocParser::RefuseDeepNesting(const DOMElement& element) const {
  if (deepestLevel_ <= DomLib::kMaximumServiceNesting) return;  // the way up is slow
  std::size_t levels = 0;
  for (const DOMNode* outer = &element; outer != nullptr; outer = outer->getParentNode()) {
    if (IsLevel(*outer)) ++levels;
  }
  if (levels > DomLib::kMaximumServiceNesting) {
    throw std::runtime_error("the document nests more than " +
                             std::to_string(DomLib::kMaximumServiceNesting) +
                             " services and gateways in one another");
  }
}

bool SRDocParser::DeserializeService(DOMElement& service, const DomLib::Descendants& below, SRStore& store) {
  std::wstring id = DomLib::TextOf(below.First("SRID"));
  std::wstring name = DomLib::TextOf(below.First("Name"));
  std::wstring address = DomLib::TextOf(below.First("Address"));
  const std::wstring type = NonNullAttribute(service, "type");
  if (id.empty() || name.empty() || address.empty() || type.empty()) {
    return Refuse("required service element is missing.");
  }
  if (!Accepts(ProblemWithKey(id, "a service's id")) ||
      !Accepts(ProblemWithLength(name, "a service's name")) ||
      !Accepts(ProblemWithLength(address, "a service's address"))) {
    return false;
  }
  store.SetStoreID(std::move(id));
  store.SetStoreName(std::move(name));
  store.SetStoreURL(std::move(address));
  store.SetSRType(SRTypeFromString(type));
  return true;
}

bool SRDocParser::DeserializeGateways(const DomLib::Descendants& below, SRStore& store) {
  DomLib::Descendants::Items gateways = below.ItemsOfFirst("Gateways", "Gateway");
  while (const DOMElement* element = gateways.Next()) {
    RefuseDeepNesting(*element);
    std::wstring name = NonNullAttribute(*element, "Name");
    std::wstring location = SubNodeText(*element, "Location");
    const std::wstring edition = NonNullAttribute(*element, "Edition");
    const std::wstring authentication = NonNullAttribute(*element, "Auth");
    const std::wstring mode = NonNullAttribute(*element, "RewriteMode");
    // One of them is enough: deliberate.
    if (name.empty() && location.empty() && edition.empty() && authentication.empty() && mode.empty()) {
      return Refuse("required gateway attribute is missing.");
    }
    if (!Accepts(ProblemWithKey(name, "a gateway's name")) ||
        !Accepts(ProblemWithLength(location, "a gateway's address"))) {
      return false;
    }
    SRGateway gateway;
    gateway.SetName(std::move(name));
    gateway.SetAuthentication(GatewayAuthFromString(authentication));
    gateway.SetEdition(GatewayEditionFromString(edition));
    gateway.SetAGMode(AGModeFromString(mode));
    gateway.SetLocation(std::move(location));
    gateway.SetDefault(AsBool(NonNullAttribute(*element, "Default")));
    store.AddGateway(std::move(gateway));
  }
  return true;
}

bool SRDocParser::DeserializeBeacons(const DomLib::Descendants& below, SRStore& store, BeaconType type) {
  const char* container = type == BeaconType::Internal ? "Internal" : "External";
  DomLib::Descendants::Items beacons = below.ItemsOfFirst(container, "Beacon");
  while (const DOMElement* element = beacons.Next()) {
    const DOMNode* content = element->getFirstChild();
    if (content == nullptr) {
      return Refuse("incorrect beacons list");
    }
    // An element has no value and counts as an empty address.
    const XMLCh* value = content->getNodeValue();
    std::wstring location = value == nullptr ? std::wstring() : trim(AsWString(value), std::locale());
    if (location.empty()) {
      SR_TRACE(0) << "SR XML Parsing warning: empty beacon address";
      continue;
    }
    if (!Accepts(ProblemWithLength(location, "a beacon's address"))) return false;
    SRBeacon beacon;
    beacon.SetLocation(std::move(location));
    store.AddBeacon(std::move(beacon), type);
  }
  return true;
}

SRType SRDocParser::SRTypeFromString(const std::wstring& text) const {
  if (UpperCase(text) == L"STORE") return SRType::store;
  SR_TRACE(2) << "SRTypeFromString conversion error unknown type: " << text;
  return SRType::unknown;
}

SRGateway::GatewayEdition SRDocParser::GatewayEditionFromString(const std::wstring& text) const {
  using enum SRGateway::GatewayEdition;
  static constexpr Spelling<SRGateway::GatewayEdition> kSpellings[] = {
      {L"Advanced", Advanced}, {L"Enterprise", Enterprise}, {L"Standard", Standard}};
  if (const auto* edition = Spelled(kSpellings, text)) return *edition;
  SR_TRACE(2) << "GatewayEditionFromString: unexpected gateway edition type: " << text;
  return Standard;
}

SRGateway::GatewayAuthentication SRDocParser::GatewayAuthFromString(const std::wstring& text) const {
  using enum SRGateway::GatewayAuthentication;
  static constexpr Spelling<SRGateway::GatewayAuthentication> kSpellings[] = {{L"RSA", RSA},
                                                                              {L"Domain", Domain},
                                                                              {L"DomainAndRSA", DomainAndRSA},
                                                                              {L"SMS", SMS},
                                                                              {L"GatewayKnows", GatewayKnows},
                                                                              {L"None", None}};
  if (const auto* authentication = Spelled(kSpellings, text)) return *authentication;
  SR_TRACE(2) << "GatewayAuthFromString: unexpected gateway authentication type: " << text;
  return None;
}

SRGateway::AGMode SRDocParser::AGModeFromString(const std::wstring& text) const {
  using enum SRGateway::AGMode;
  static constexpr Spelling<SRGateway::AGMode> kSpellings[] = {
      {L"SG_RW", SG_RW}, {L"FB_RW", FB_RW}, {L"ENTCVPN_RW", ENTCVPN_RW}, {L"NONE", NONE}};
  if (const auto* mode = Spelled(kSpellings, text)) return *mode;
  SR_TRACE(2) << "AGModeFromString: unexpected gateway mode type: " << text;
  return NONE;
}

}  // namespace ServiceRecords

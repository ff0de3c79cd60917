#pragma once

#include "SRLib/SRStore.h"
#include "libs/DomLib/Descendants.h"
#include "libs/DomLib/DomServices.h"
#include "libs/DomLib/XercesUtils.h"

#include <cstddef>
#include <string>

XERCES_CPP_NAMESPACE_BEGIN
class DOMElement;
class DOMNode;
class DOMNodeList;
XERCES_CPP_NAMESPACE_END

namespace ServiceRecords {

// The namespace of service records, in both kinds of document.
inline constexpr wchar_t kServiceRecordNamespace[] = L"urn:morvane:servicerecord";

// Turns the text of a service-record document into the stores that it describes. Problems are reported in the
// trace log, and to whoever wants them. One call at a time; make one parser for each document.
class SRDocParser {
 public:
  SRDocParser() = default;
  virtual ~SRDocParser() = default;
  SRDocParser(const SRDocParser&) = delete;
  SRDocParser& operator=(const SRDocParser&) = delete;

  // Whoever wants to know, beside the trace log, what is wrong with the document.
  void ReportTo(DomLib::ProblemReport report);

  // Tells the XML layer which schema documents of this kind name, and which file holds it.
  virtual void SetSchema();
  // Collects the document's services and reads them into `out`.
  virtual bool DeserializeDocStructure(const xercesc::DOMElement& root, StoreMap& out);

  // Clears `out` and fills it with the stores of the document. False only without a root element or after an
  // exception; a document that fails its schema is read as far as possible all the same.
  bool Deserialize(const std::wstring& text, StoreMap& out);

  // The root element of the document that was read last; empty when it has none.
  [[nodiscard]] std::wstring RootName() const;
  // Whether that element names a schema; without one, nothing is validated.
  [[nodiscard]] bool NamesSchema() const;

  [[nodiscard]] SRType SRTypeFromString(const std::wstring& text) const;
  [[nodiscard]] SRGateway::GatewayEdition GatewayEditionFromString(const std::wstring& text) const;
  [[nodiscard]] SRGateway::GatewayAuthentication GatewayAuthFromString(const std::wstring& text) const;
  [[nodiscard]] SRGateway::AGMode AGModeFromString(const std::wstring& text) const;

 protected:
  // For a kind of document whose services are those of a namespace.
  explicit SRDocParser(const std::wstring& serviceNamespace)
      : serviceNamespace_(AsXString(serviceNamespace)) {}

  [[nodiscard]] const xercesc::DOMElement* GetServicesElem(const std::wstring& text);
  bool DeserializeServiceNodes(const xercesc::DOMNodeList& services, StoreMap& out);
  bool DeserializeGateways(const DomLib::Descendants& below, SRStore& store);
  bool DeserializeBeacons(const DomLib::Descendants& below, SRStore& store, BeaconType type);

  DOMServices domServices_;

 private:
  class ServiceList;
  struct BelowService {
    const xercesc::DOMElement* service = nullptr;
    DomLib::Descendants elements;
  };

  bool DeserializeService(xercesc::DOMElement& service, const DomLib::Descendants& below, SRStore& store);
  // The elements below it, which are good until the next call, or until the list of services is asked.
  [[nodiscard]] const DomLib::Descendants& Below(const xercesc::DOMElement& service);
  [[nodiscard]] bool IsService(const xercesc::DOMNode& node) const;
  [[nodiscard]] bool IsLevel(const xercesc::DOMNode& node) const;
  void RefuseDeepNesting(const xercesc::DOMElement& element) const;
  [[nodiscard]] const xercesc::DOMElement* Root() const;
  // Whether the problem is none, an empty text; one that there is ends the document.
  [[nodiscard]] bool Accepts(const std::string& problem) const;
  [[nodiscard]] bool Refuse(const std::string& problem) const;  // false
  void ReportEnd(const std::string& reason) const;

  DomLib::ProblemReport report_;
  xercesc::DOMDocument* document_ = nullptr;  // owned by domServices_
  std::size_t deepestLevel_ = 0;              // found so far, of services and gateways inside one another
  BelowService below_;
  const DomLib::XString serviceNamespace_;  // empty: services are known by their tag name as written
};

}  // namespace ServiceRecords

#include "SRLib/DiscoveryDocParser.h"

#include "libs/DomLib/XercesUtils.h"

#include <xercesc/dom/DOM.hpp>

namespace ServiceRecords {

void DiscoveryDocParser::SetSchema() {
  domServices_.SetSchema(L"discovery", L"discoverydocument.xsd");
  domServices_.SetImportedSchema(L"servicerecord.xsd");
}

bool DiscoveryDocParser::DeserializeDocStructure(const xercesc::DOMElement& root, StoreMap& out) {
  const xercesc::DOMNodeList* services =
      root.getElementsByTagNameNS(AsXString(kServiceRecordNamespace).c_str(), AsXString("Service").c_str());
  return services != nullptr && DeserializeServiceNodes(*services, out);
}

}  // namespace ServiceRecords

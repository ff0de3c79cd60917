#include "SRLib/DiscoveryDocParser.h"

namespace ServiceRecords {

void DiscoveryDocParser::SetSchema() {
  domServices_.SetSchema(L"discovery", L"discoverydocument.xsd");
  domServices_.SetImportedSchema(L"servicerecord.xsd");
}

}  // namespace ServiceRecords

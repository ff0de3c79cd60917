#pragma once

#include "SRLib/SRDocParser.h"

namespace ServiceRecords {

// Reads a store's discovery document: the services in the service-record namespace, wherever they stand.
// Everything else is as for a service-record document.
class DiscoveryDocParser : public SRDocParser {
 public:
  DiscoveryDocParser() : SRDocParser(kServiceRecordNamespace) {}

  void SetSchema() override;
};

}  // namespace ServiceRecords

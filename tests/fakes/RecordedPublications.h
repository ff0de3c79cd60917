#pragma once

#include "SRLib/Provider/StoreSnapshot.h"
#include "SRLib/SRStore.h"

#include <memory>
#include <vector>

namespace testsupport {

// One list that the core handed to the network-location library.
struct Publication {
  ServiceRecords::StoreMap stores;
  std::shared_ptr<const ServiceRecords::StoreSnapshot> snapshot;
  bool insideCriticalSection = false;
  int writesBefore = 0;  // to the user's configuration
  std::size_t traceRecordsBefore = 0;
};

// All lists handed over since the last Clear, in order. Any thread.
class RecordedPublications {
 public:
  static void Clear();
  [[nodiscard]] static std::vector<Publication> All();
  // The next publication throws std::runtime_error instead.
  static void FailNext();
};

}  // namespace testsupport

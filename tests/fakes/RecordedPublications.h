#pragma once

#include "SRLib/StoreMap.h"

#include <vector>

namespace testsupport {

// One list that the core handed to the network-location library.
struct Publication {
  ServiceRecords::StoreMap stores;
  bool insideCriticalSection = false;
};

// All lists handed over since the last Clear, in order. Any thread.
class RecordedPublications {
 public:
  static void Clear();
  [[nodiscard]] static std::vector<Publication> All();
};

}  // namespace testsupport

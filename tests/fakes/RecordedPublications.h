#pragma once

#include "SRLib/Provider/StoreSnapshot.h"
#include "SRLib/SRStore.h"

#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace TestSupport {

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
  // What happened before a publication is asked for when it happens.
  RecordedPublications(std::function<int()> writes, std::function<std::size_t()> traceRecords);

  void Clear();
  [[nodiscard]] std::vector<Publication> All() const;
  // The next publication throws std::runtime_error instead.
  void FailNext();

  void Add(const std::shared_ptr<const ServiceRecords::StoreSnapshot>& stores);

 private:
  const std::function<int()> writes_;
  const std::function<std::size_t()> traceRecords_;
  mutable std::mutex mutex_;
  std::vector<Publication> publications_;
  bool failNext_ = false;
};

}  // namespace TestSupport

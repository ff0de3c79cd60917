#include "fakes/RecordedPublications.h"

#include "fakes/FakeCriticalSections.h"

#include <stdexcept>
#include <utility>

namespace TestSupport {
namespace {

ServiceRecords::StoreMap MapOf(const ServiceRecords::StoreSnapshot& snapshot) {
  ServiceRecords::StoreMap stores;
  for (const auto& store : snapshot) stores.emplace(store.GetStoreID(), store);
  return stores;
}

}  // namespace

RecordedPublications::RecordedPublications(std::function<int()> writes,
                                           std::function<std::size_t()> traceRecords)
    : writes_(std::move(writes)), traceRecords_(std::move(traceRecords)) {}

void RecordedPublications::Clear() {
  const std::lock_guard lock(mutex_);
  publications_.clear();
  failNext_ = false;
}

void RecordedPublications::FailNext() {
  const std::lock_guard lock(mutex_);
  failNext_ = true;
}

std::vector<Publication> RecordedPublications::All() const {
  const std::lock_guard lock(mutex_);
  return publications_;
}

void RecordedPublications::Add(const std::shared_ptr<const ServiceRecords::StoreSnapshot>& stores) {
  const std::lock_guard lock(mutex_);
  if (std::exchange(failNext_, false)) throw std::runtime_error("publication");
  publications_.push_back({MapOf(*stores), stores, InsideCriticalSection(), writes_(), traceRecords_()});
}

}  // namespace TestSupport

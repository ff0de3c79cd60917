#include "fakes/RecordedPublications.h"

#include "SRLib/Platform/Publication.h"
#include "fakes/CapturedTrace.h"
#include "fakes/FakeCriticalSections.h"
#include "fakes/FakeFactories.h"

#include <mutex>
#include <stdexcept>
#include <utility>

namespace testsupport {
namespace {

std::mutex mutex;
std::vector<Publication> publications;
bool failNext = false;

ServiceRecords::StoreMap MapOf(const ServiceRecords::StoreSnapshot& snapshot) {
  ServiceRecords::StoreMap stores;
  for (const auto& store : snapshot) stores.emplace(store.GetStoreID(), store);
  return stores;
}

}  // namespace

void RecordedPublications::Clear() {
  const std::lock_guard lock(mutex);
  publications.clear();
  failNext = false;
}

void RecordedPublications::FailNext() {
  const std::lock_guard lock(mutex);
  failNext = true;
}

std::vector<Publication> RecordedPublications::All() {
  const std::lock_guard lock(mutex);
  return publications;
}

}  // namespace testsupport

namespace ServiceRecords {

void SetAllServiceRecordsToList(const std::shared_ptr<const StoreSnapshot>& stores) {
  const std::lock_guard lock(testsupport::mutex);
  if (std::exchange(testsupport::failNext, false)) throw std::runtime_error("publication");
  testsupport::publications.push_back(
      {testsupport::MapOf(*stores), stores, testsupport::InsideCriticalSection(),
       testsupport::UserConfiguration().Writes(), testsupport::CapturedTrace::Records().size()});
}

}  // namespace ServiceRecords

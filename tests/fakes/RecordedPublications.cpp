#include "fakes/RecordedPublications.h"

#include "SRLib/Publication.h"
#include "fakes/FakeCriticalSections.h"

#include <mutex>

namespace testsupport {
namespace {

std::mutex mutex;
std::vector<Publication> publications;

}  // namespace

void RecordedPublications::Clear() {
  const std::lock_guard lock(mutex);
  publications.clear();
}

std::vector<Publication> RecordedPublications::All() {
  const std::lock_guard lock(mutex);
  return publications;
}

}  // namespace testsupport

namespace ServiceRecords {

void SetAllServiceRecordsToList(const StoreMap& stores) {
  const std::lock_guard lock(testsupport::mutex);
  testsupport::publications.push_back({stores, testsupport::InsideCriticalSection()});
}

}  // namespace ServiceRecords

#include "fakes/FakeCriticalSections.h"

#include <mutex>

namespace TestSupport {
namespace {

thread_local int entered = 0;
thread_local int entries = 0;

class FakeCriticalSection : public CGenericCS {
 public:
  bool Create() override { return true; }
  bool Enter() override {
    mutex_.lock();
    ++entered;
    ++entries;
    return true;
  }
  bool Leave() override {
    --entered;
    mutex_.unlock();
    return true;
  }
  bool Delete() override { return true; }
  bool TryEnter() override {
    if (!mutex_.try_lock()) return false;
    ++entered;
    ++entries;
    return true;
  }

 private:
  std::recursive_mutex mutex_;
};

}  // namespace

std::unique_ptr<CGenericCS> FakeCriticalSectionFactory::ManufactureCriticalSection() {
  return std::make_unique<FakeCriticalSection>();
}

bool InsideCriticalSection() {
  return entered != 0;
}

int CriticalSectionEntries() {
  return entries;
}

}  // namespace TestSupport

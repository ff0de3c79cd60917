#include "doctor/LocationReasons.h"

#include "SRLib/Platform/Publication.h"
#include "SRLib/SRRegistryConfig.h"
#include "libs/Text/TextHelpers.h"
#include "libs/Wayfinder/LocationMessage.h"
#include "libs/Wayfinder/Wayfinder.h"

#include <condition_variable>
#include <mutex>
#include <string_view>

namespace {

// Takes the messages "store URL: reason" out of the library's log.
class Collector {
 public:
  void Expect(const ServiceRecords::StoreMap& stores) {
    for (const auto& [id, store] : stores) {
      const std::string url = util::narrow(store.GetStoreURL());
      expected_[Wayfinding::LocationMessage(url, "")] = url;
    }
  }

  void Take(std::string_view message) {
    const std::lock_guard lock(mutex_);
    for (const auto& [beginning, url] : expected_) {
      if (message.starts_with(beginning)) reasons_[url] = message.substr(beginning.size());
    }
    if (reasons_.size() == expected_.size()) complete_.notify_all();
  }

  std::map<std::string, std::string> WaitFor(std::chrono::seconds limit) {
    std::unique_lock lock(mutex_);
    complete_.wait_for(lock, limit, [this] { return reasons_.size() == expected_.size(); });
    return reasons_;
  }

 private:
  std::mutex mutex_;
  std::condition_variable complete_;
  std::map<std::string, std::string> expected_;  // beginnings of messages, and the URLs that they are about
  std::map<std::string, std::string> reasons_;
};

// Never destroyed: the library's thread may still write a message while the process exits.
Collector& TheCollector() {
  static Collector& collector = *new Collector;
  return collector;
}

}  // namespace

std::map<std::string, std::string> LocationReasons(std::chrono::seconds limit) {
  const ServiceRecords::StoreMap stores = ServiceRecords::SRRegistryConfig().RestoreStores();
  TheCollector().Expect(stores);
  WFSetCustomLogFunc([](const char* message) { TheCollector().Take(message); });
  ServiceRecords::SetAllServiceRecordsToList(std::make_shared<const ServiceRecords::StoreSnapshot>(stores));
  std::map<std::string, std::string> reasons = TheCollector().WaitFor(limit);
  WFSetCustomLogFunc(nullptr);
  ServiceRecords::SetAllServiceRecordsToList(std::make_shared<const ServiceRecords::StoreSnapshot>());
  return reasons;
}

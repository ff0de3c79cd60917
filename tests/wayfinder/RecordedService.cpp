#include "wayfinder/RecordedService.h"

#include <algorithm>
#include <stdexcept>

namespace TestSupport {
namespace {

using PropertyList::Array;
using PropertyList::Dictionary;

constexpr std::chrono::seconds kHangs{60};

Array Beacons(const std::vector<std::string>& locations) {
  Array beacons;
  for (const std::string& location : locations)
    beacons.emplace_back(Dictionary{{"BeaconLocation", location}, {"BeaconDSConfirmed", false}});
  return beacons;
}

Dictionary StoreEntry(const StoreAndBeacons& store) {
  Dictionary entry{{"StoreName", "Store"}, {"StoreURL", store.url}, {"StoreType", 0}, {"StoreID", store.url}};
  if (!store.internal.empty()) entry.Set("StoreInternalBeacons", Beacons(store.internal));
  if (!store.external.empty()) entry.Set("StoreExternalBeacons", Beacons(store.external));
  return entry;
}

}  // namespace

RecordedService::RecordedService(Wayfinding::HostLookups::Resolver resolver,
                                 std::chrono::milliseconds pauseAfterFailure) {
  Wayfinding::LocationParts parts = Parts(std::move(resolver));
  parts.pauseAfterFailure = pauseAfterFailure;
  service_.emplace(std::move(parts));
}

std::chrono::steady_clock::time_point RecordedService::Now() const {
  const auto stopped = stoppedAt_.load();
  const bool isStopped = stopped != std::chrono::steady_clock::time_point();
  return (isStopped ? stopped : std::chrono::steady_clock::now()) + std::chrono::seconds(passed_);
}

Wayfinding::LocationParts RecordedService::Parts(Wayfinding::HostLookups::Resolver resolver) {
  const auto findNothing = [](const std::string& /*host*/) { return std::vector<std::string>(); };
  Wayfinding::LocationParts parts = Wayfinding::LocationParts::Defaults();
  parts.now = [this] { return Now(); };
  parts.chance = [] { return 0.0; };
  parts.resolver = resolver ? std::move(resolver) : findNothing;
  parts.log = [this](const std::string& message) { Record(message); };
  parts.changed = [this](const std::string& url, Wayfinding::NetworkLocation location) {
    const std::lock_guard lock(mutex_);
    changes_.emplace_back(url, location);
    changed_.notify_all();
  };
  return parts;
}

void RecordedService::Record(const std::string& message) {
  if (fails_.exchange(false)) throw std::runtime_error("a failure of the test's");
  {
    const std::lock_guard lock(mutex_);
    messages_.push_back(message);
    changed_.notify_all();
  }
  if (work_ && message.find(awaitedText_) != std::string::npos) std::exchange(work_, nullptr)();
}

void RecordedService::SetStores(const std::vector<StoreAndBeacons>& stores) {
  PropertyList::SharedDictionaries list;
  for (const StoreAndBeacons& store : stores)
    list.push_back(std::make_shared<const Dictionary>(StoreEntry(store)));
  service_->SetStores(list);
}

std::uint32_t RecordedService::LocationOf(const std::string& url) {
  return service_->DecisionOf(url).location;
}

std::string RecordedService::ReasonFor(const std::string& url) {
  return service_->DecisionOf(url).reason.English();
}

bool RecordedService::WaitForLocation(const std::string& url, std::uint32_t location) {
  std::unique_lock lock(mutex_);
  return changed_.wait_for(lock, kHangs, [&] {
    const auto last = std::find_if(changes_.rbegin(), changes_.rend(),
                                   [&url](const Change& change) { return change.first == url; });
    // What was given out last may be of a list that has been replaced since.
    return last != changes_.rend() && last->second == location && LocationOf(url) == location;
  });
}

bool RecordedService::WaitForMessage(const std::string& text, int count) {
  std::unique_lock lock(mutex_);
  return changed_.wait_for(lock, kHangs, [&] {
    return std::count_if(messages_.begin(), messages_.end(), [&text](const std::string& message) {
             return message.find(text) != std::string::npos;
           }) >= count;
  });
}

std::vector<std::string> RecordedService::Messages() const {
  const std::lock_guard lock(mutex_);
  return messages_;
}

std::vector<RecordedService::Change> RecordedService::Changes() const {
  const std::lock_guard lock(mutex_);
  return changes_;
}

}  // namespace TestSupport

#include "libs/Wayfinder/StoreLocations.h"

namespace Wayfinding {

bool StoreLocations::Replace(const std::map<std::string, StoreBeacons>& stores) {
  const ThreadSafety::MutexLock lock(mutex_);
  auto list = std::make_shared<std::vector<StorePtr>>();
  std::map<std::string, Place> places;
  for (const auto& [key, store] : stores) {
    Place& place = places[key];
    if (const auto before = places_.find(key); before != places_.end()) place = before->second;
    if (place.store == nullptr || *place.store != store) {
      place.store = std::make_shared<const StoreBeacons>(store);
      place.decision = {};
    }
    list->push_back(place.store);
  }
  if (*list == *stores_) return false;
  stores_ = std::move(list);
  places_ = std::move(places);
  mayHaveChanged_ = true;
  return true;
}

StoreLocations::StoreList StoreLocations::Current() const {
  const ThreadSafety::MutexLock lock(mutex_);
  return stores_;
}

std::optional<StoreLocations::Answer> StoreLocations::Find(const std::string& url, TimePoint now) const {
  const std::string key = StoreKey(url);
  const ThreadSafety::MutexLock lock(mutex_);
  const auto place = places_.find(key);
  if (place == places_.end()) return std::nullopt;
  const bool decided = place->second.decision.location != kDeciding;
  return Answer{.decision = place->second.decision,
                .isOld = decided && now - place->second.decided >= kOldAge};
}

void StoreLocations::ForgetDecisions() {
  const ThreadSafety::MutexLock lock(mutex_);
  for (auto& [key, place] : places_) place.decision = {};
  mayHaveChanged_ = true;
}

void StoreLocations::Decide(const StorePtr& store, const LocationDecision& decision, TimePoint now) {
  const std::string key = StoreKey(store->url);
  const ThreadSafety::MutexLock lock(mutex_);
  const auto place = places_.find(key);
  if (place == places_.end() || place->second.store != store) return;
  place->second.decision = decision;
  place->second.decided = now;
  mayHaveChanged_ = true;
}

std::vector<std::pair<std::string, NetworkLocation>> StoreLocations::TakeChanges() {
  const ThreadSafety::MutexLock lock(mutex_);
  std::vector<std::pair<std::string, NetworkLocation>> changes;
  if (!std::exchange(mayHaveChanged_, false)) return changes;
  for (auto& [key, place] : places_) {
    if (place.taken == place.decision.location) continue;
    place.taken = place.decision.location;
    changes.emplace_back(place.store->url, place.taken);
  }
  return changes;
}

}  // namespace Wayfinding

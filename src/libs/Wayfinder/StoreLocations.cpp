#include "libs/Wayfinder/StoreLocations.h"

namespace Wayfinding {

bool StoreLocations::Replace(std::vector<StoreBeacons> stores) {
  const MutexLock lock(mutex_);
  if (stores == *stores_) return false;
  ++number_;
  std::map<std::string, Place> places;
  for (std::size_t i = 0; i < stores.size(); ++i) {
    std::string key = StoreKey(stores[i].url);
    const Place place = PlaceInNextList(key, stores[i]);
    places.emplace(std::move(key), place).first->second.store = i;
  }
  places_ = std::move(places);
  stores_ = std::make_shared<const std::vector<StoreBeacons>>(std::move(stores));
  mayHaveChanged_ = true;
  return true;
}

StoreLocations::Place StoreLocations::PlaceInNextList(const std::string& key, StoreBeacons& store) const {
  store.since = number_;
  const auto before = places_.find(key);
  if (before == places_.end()) return {};
  Place place = before->second;
  if (const StoreBeacons& own = (*stores_)[place.store]; own == store) {
    store.since = own.since;
  } else {
    place.decision = {};
  }
  return place;
}

StoreLocations::Snapshot StoreLocations::Current() const {
  const MutexLock lock(mutex_);
  return {.stores = stores_, .number = number_};
}

std::optional<StoreLocations::Answer> StoreLocations::Find(const std::string& url, TimePoint now) const {
  const std::string key = StoreKey(url);
  const MutexLock lock(mutex_);
  const auto place = places_.find(key);
  if (place == places_.end()) return std::nullopt;
  const bool decided = place->second.decision.location != NetworkLocation::Deciding;
  return Answer{.decision = place->second.decision,
                .isOld = decided && now - place->second.decided >= kOldAge};
}

void StoreLocations::ForgetDecisions() {
  const MutexLock lock(mutex_);
  for (auto& [key, place] : places_) place.decision = {};
  mayHaveChanged_ = true;
}

void StoreLocations::Decide(std::uint64_t number, const std::string& storeURL,
                            const LocationDecision& decision, TimePoint now) {
  const std::string key = StoreKey(storeURL);
  const MutexLock lock(mutex_);
  const auto place = places_.find(key);
  if (place == places_.end() || (*stores_)[place->second.store].since > number) return;
  place->second.decision = decision;
  place->second.decided = now;
  mayHaveChanged_ = true;
}

std::vector<std::pair<std::string, NetworkLocation>> StoreLocations::TakeChanges() {
  const MutexLock lock(mutex_);
  std::vector<std::pair<std::string, NetworkLocation>> changes;
  if (!std::exchange(mayHaveChanged_, false)) return changes;
  for (auto& [key, place] : places_) {
    if (place.taken == place.decision.location) continue;
    place.taken = place.decision.location;
    changes.emplace_back((*stores_)[place.store].url, place.taken);
  }
  return changes;
}

}  // namespace Wayfinding

#pragma once

#include "libs/ThreadSafety/ThreadSafety.h"
#include "libs/Wayfinder/NetworkLocation.h"
#include "libs/Wayfinder/StoreBeacons.h"

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace Wayfinding {

// The stores and their locations, as far as decided. Any thread; no call waits for anything but another call.
class StoreLocations {
 public:
  using TimePoint = std::chrono::steady_clock::time_point;
  using StoreList = std::shared_ptr<const std::vector<StoreBeacons>>;

  static constexpr std::chrono::minutes kOldAge{5};

  // A list and its number, under which decisions about its stores are taken.
  struct Snapshot {
    StoreList stores;
    std::uint64_t number = 0;
  };

  struct Answer {
    LocationDecision decision;
    bool isOld = false;
  };

  // Replaces the list; a store that is in it as it was before keeps its location, any other is undecided.
  // False, and nothing changes, when it is the same.
  [[nodiscard]] bool Replace(std::vector<StoreBeacons> stores);
  [[nodiscard]] Snapshot Current() const;

  // Nothing for an unknown store.
  [[nodiscard]] std::optional<Answer> Find(const std::string& url, TimePoint now) const;

  // Every store is undecided again.
  void ForgetDecisions();
  // Dropped when the store is no more, or not as it was in the list with that number.
  void Decide(std::uint64_t number, const std::string& storeURL, const LocationDecision& decision,
              TimePoint now);

  // The stores whose location differs from the one taken last, with the URL of the list. A store begins
  // undecided.
  [[nodiscard]] std::vector<std::pair<std::string, NetworkLocation>> TakeChanges();

 private:
  struct Place {
    std::size_t store = 0;
    LocationDecision decision;
    NetworkLocation taken = NetworkLocation::Deciding;
    TimePoint decided;
  };

  // What is known of the store; says since when the store is as it is.
  [[nodiscard]] Place PlaceInNextList(const std::string& key, StoreBeacons& store) const SR_REQUIRES(mutex_);

  mutable Mutex mutex_;
  StoreList stores_ SR_GUARDED_BY(mutex_) = std::make_shared<const std::vector<StoreBeacons>>();
  std::uint64_t number_ SR_GUARDED_BY(mutex_) = 0;
  std::map<std::string, Place> places_ SR_GUARDED_BY(mutex_);
  bool mayHaveChanged_ SR_GUARDED_BY(mutex_) = false;
};

}  // namespace Wayfinding

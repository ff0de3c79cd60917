#pragma once

#include "libs/NetworkLocation/NetworkLocation.h"
#include "libs/ThreadSafety/ThreadSafety.h"
#include "libs/Wayfinder/LocationDecision.h"
#include "libs/Wayfinder/StoreBeacons.h"

#include <chrono>
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
  using StoreList = std::shared_ptr<const std::vector<StorePtr>>;

  static constexpr std::chrono::minutes kOldAge{5};

  struct Answer {
    LocationDecision decision;
    bool isOld = false;
  };

  // Replaces the list; a store that is in it as it was before keeps its location, any other is undecided.
  // False, and nothing changes, when it is the same. `stores`: by their keys.
  [[nodiscard]] bool Replace(const std::map<std::string, StoreBeacons>& stores);
  // The same object until the list is replaced.
  [[nodiscard]] StoreList Current() const;

  // Nothing for an unknown store.
  [[nodiscard]] std::optional<Answer> Find(const std::string& url, TimePoint now) const;

  // Every store is undecided again.
  void ForgetDecisions();
  // Dropped when the list does not hold this store any more.
  void Decide(const StorePtr& store, const LocationDecision& decision, TimePoint now);

  // The stores whose location differs from the one taken last, with the URL of the list. A store begins
  // undecided.
  [[nodiscard]] std::vector<std::pair<std::string, NetworkLocation>> TakeChanges();

 private:
  struct Place {
    StorePtr store;
    LocationDecision decision;
    NetworkLocation taken = kDeciding;
    TimePoint decided;
  };

  mutable ThreadSafety::Mutex mutex_;
  StoreList stores_ SR_GUARDED_BY(mutex_) = std::make_shared<const std::vector<StorePtr>>();
  std::map<std::string, Place> places_ SR_GUARDED_BY(mutex_);
  bool mayHaveChanged_ SR_GUARDED_BY(mutex_) = false;
};

}  // namespace Wayfinding

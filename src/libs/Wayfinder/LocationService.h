#pragma once

#include "libs/PropertyList/PropertyList.h"
#include "libs/ThreadSafety/ThreadSafety.h"
#include "libs/Wayfinder/LocationDecision.h"
#include "libs/Wayfinder/LocationLoop.h"

#include <chrono>
#include <cstdint>
#include <future>
#include <memory>
#include <string>
#include <thread>

namespace Wayfinding {

// The location library without its process-wide door. Any thread; no call waits for the network. Its own
// thread starts with the first list that holds a store, and ends with this object: at once, or if something
// holds it up for longer than kTimeToEnd, by itself later.
class LocationService {
 public:
  static constexpr std::chrono::seconds kTimeToEnd{5};

  // Throws std::system_error when there is no descriptor to be had.
  explicit LocationService(LocationParts parts);
  ~LocationService();
  LocationService(const LocationService&) = delete;
  LocationService& operator=(const LocationService&) = delete;

  void SetStores(const PropertyList::SharedDictionaries& stores);
  // The location, and why, in one line as the log has it; nothing of that while it is undecided. An unknown
  // store is outside where the network is usable.
  [[nodiscard]] LocationDecision DecisionOf(const std::string& storeURL);
  // How the outside is reached, as the bits of networkReachabilityFlags. A tunnel that only NetworkManager
  // knows for one is told while there are stores.
  [[nodiscard]] std::uint32_t Flags() const;

 private:
  void StartThread();

  const std::shared_ptr<LocationBoard> board_;
  ThreadSafety::Mutex threadMutex_;
  std::thread thread_ SR_GUARDED_BY(threadMutex_);
  std::future<void> threadEnd_ SR_GUARDED_BY(threadMutex_);
};

}  // namespace Wayfinding

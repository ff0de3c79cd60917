#pragma once

#include "SRLib/PropertyList/PropertyList.h"
#include "libs/Wayfinder/LocationLoop.h"
#include "libs/Wayfinder/StoreLocations.h"
#include "libs/Wayfinder/WakeEvent.h"

#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

namespace Wayfinding {

// The location library without its process-wide door. Any thread; no call waits for the network. Its own
// thread starts with the first list that holds a store, and ends with this object, at once.
class LocationService {
 public:
  // Throws std::system_error when there is no descriptor to be had.
  explicit LocationService(LocationParts parts);
  ~LocationService();
  LocationService(const LocationService&) = delete;
  LocationService& operator=(const LocationService&) = delete;

  void SetStores(const PropertyList::Array& stores);
  // An unknown store is outside where the network is usable.
  [[nodiscard]] NetworkLocation LocationOf(const std::string& storeURL);

 private:
  void StartThread();
  void RunThread();

  const LocationParts parts_;
  StoreLocations locations_;
  LocationOrders orders_;
  WakeEvent wake_;
  std::mutex threadMutex_;
  std::thread thread_;
};

// How the outside is reached, as the bits of networkReachabilityFlags. Any thread; asks the kernel.
[[nodiscard]] std::uint32_t ReachabilityFlags();

}  // namespace Wayfinding

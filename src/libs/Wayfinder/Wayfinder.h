#pragma once

#include "SRLib/PropertyList/PropertyList.h"

#include <cstdint>
#include <mutex>
#include <optional>
#include <string>

// Receives one ready-made message (UTF-8, without a line end) for each call, on the thread that caused it.
using WFLogFunc = void (*)(const char* message);

// Routes the library's messages; null drops them. Set once, before other threads use the library.
void WFSetCustomLogFunc(WFLogFunc logFunction);

// Where the machine stands in the network, judged from the beacons of the stores that it was given. Any
// thread; no call waits for the network. It does not probe beacons: every store's location is still being
// decided.
class Wayfinder {
 public:
  // Network locations.
  static constexpr std::uint32_t kDeciding = 0;
  static constexpr std::uint32_t kLAN = 1;
  static constexpr std::uint32_t kOutside = 2;
  static constexpr std::uint32_t kNone = 3;
  static constexpr std::uint32_t kVPN = 4;
  static constexpr std::uint32_t kHotspot = 5;
  static constexpr std::uint32_t kPartlyInternal = 6;

  // Bits of networkReachabilityFlags.
  static constexpr std::uint32_t kTransientConnection = 1U << 0;
  static constexpr std::uint32_t kReachable = 1U << 1;
  static constexpr std::uint32_t kIsDirect = 1U << 17;

  static Wayfinder& sharedInstance();

  // The location relative to the store at this URL (UTF-8): one of the network location values.
  [[nodiscard]] std::uint32_t locationRelativeToStoreURL(const std::string& url);

  // Reachability by way of the default route; 0 without one.
  [[nodiscard]] std::uint32_t networkReachabilityFlags();

  // Replaces the whole list of store dictionaries; nothing means none.
  void setAllServiceRecordsToList(std::optional<PropertyList::Array> stores);

 private:
  std::mutex mutex_;
  std::optional<PropertyList::Array> stores_;
};

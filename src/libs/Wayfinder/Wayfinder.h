#pragma once

#include "libs/NetworkLocation/NetworkLocation.h"
#include "libs/PropertyList/PropertyList.h"
#include "libs/Wayfinder/LocationDecision.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace Wayfinding {
class LocationService;
}

// Receives one ready-made message (UTF-8, without a line end) for each call, on the thread that caused it:
// the library's own for everything but the replacement of the store list.
using WFLogFunc = void (*)(const char* message);

// Routes the library's messages; null drops them. Any thread; counts for the messages from then on.
void WFSetCustomLogFunc(WFLogFunc logFunction);

// Receives a store's URL, as the list spells it, and its location whenever that differs from the one given
// out before, kDeciding included; a store begins with kDeciding. On the library's thread, which waits for it:
// it hands over and returns.
using WFLocationFunc = void (*)(const char* storeURL, std::uint32_t location);

// Routes the changes of locations; null drops them. Any thread; counts for the changes from then on.
void WFSetLocationFunc(WFLocationFunc locationFunction);

// Where the machine stands in the network, judged from the beacons of the stores that it was given. Any
// thread; no call waits for the network.
//
// A beacon is asked directly, never through a proxy, which would answer for everybody: https for a handshake
// that verifies for its name, http for an answer below 500 that does not lead to another host. A location is
// kDeciding from a change of the network or of the store until its first answers are in, ten seconds at most.
// Answers older than five minutes are refreshed while they are served. Stores without any answer but a
// portal's are asked again after 1, 2, 4 ... up to 300 seconds. An idle library has no timer. Beacons on the
// loopback address are asked even without a network.
class Wayfinder {
 public:
  using enum Wayfinding::NetworkLocation;

  // Bits of networkReachabilityFlags.
  static constexpr std::uint32_t kTransientConnection = 1U << 0;  // through a tunnel
  static constexpr std::uint32_t kReachable = 1U << 1;
  static constexpr std::uint32_t kIsLocalAddress = 1U << 16;  // what is outside ends on this machine
  static constexpr std::uint32_t kIsDirect = 1U << 17;        // without a gateway

  // Made on first use; its thread starts with the first store.
  static Wayfinder& sharedInstance();

  // The location relative to the store at this URL (UTF-8): one of the network location values. Letter case
  // and slashes at the end of the URL do not count. A store that is not in the list: kOutside with a usable
  // network, kNone without.
  [[nodiscard]] std::uint32_t locationRelativeToStoreURL(const std::string& url);

  // The same location, and why it is this one, as the library's log has it: without what addresses tell of
  // users.
  [[nodiscard]] Wayfinding::LocationDecision explainLocationRelativeToStoreURL(const std::string& url);

  // How the outside is reached; 0 without a usable network. A tunnel that only NetworkManager knows for one
  // is told while there are stores.
  [[nodiscard]] std::uint32_t networkReachabilityFlags();

  // Replaces the whole list of store dictionaries; nothing means none. The same list again changes nothing.
  void setAllServiceRecordsToList(std::optional<PropertyList::SharedDictionaries> stores);

 private:
  Wayfinder();
  ~Wayfinder();

  std::unique_ptr<Wayfinding::LocationService> service_;
};

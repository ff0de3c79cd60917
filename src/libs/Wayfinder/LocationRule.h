#pragma once

#include "libs/Wayfinder/NetworkLocation.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace Wayfinding {

struct ProbeOutcome;

// What is known of one store's beacons. Null stands for a beacon whose answer is still open.
struct StoreFindings {
  std::vector<const ProbeOutcome*> internal;  // at least one
  std::vector<const ProbeOutcome*> external;
  bool networkIsUsable = true;
};

struct LocationDecision {
  NetworkLocation location = NetworkLocation::Deciding;
  std::string reason;  // begins with the location, "LAN, 2 of 2 internal beacons answered"
};

// The name of the tunnel through which packets to a numeric address leave; empty when they do not.
using TunnelTo = std::function<std::string(const std::string& address)>;

// The location, or nothing while open answers may still change it. A portal that resolves every name to
// itself also answers plain http in the name of others: such an answer does not count when it came from an
// address that was caught answering for another beacon, and of the external ones does not outweigh that. Any
// thread; no state.
[[nodiscard]] std::optional<LocationDecision> DecideLocation(const StoreFindings& findings,
                                                             const TunnelTo& tunnelTo);

}  // namespace Wayfinding

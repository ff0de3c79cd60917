#pragma once

#include "libs/Wayfinder/LocationDecision.h"

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

// What a round knows of an address that answered over http in an internal beacon's name. A portal that
// resolves every name to itself does so, but it answers in the name of external beacons too.
enum class PeerStanding {
  Clear,    // answered for no external beacon
  Open,     // a beacon that is being asked may still tell
  Exposed,  // answered for an external beacon, of whichever store and whatever it said
  Vouched,  // gave a certificate that verified for a beacon's name, and so is no portal
};
using StandingOf = std::function<PeerStanding(const std::string& address)>;

// The name of the tunnel through which packets to a numeric address leave; empty when they do not.
using TunnelTo = std::function<std::string(const std::string& address)>;

// The location, or nothing while what is open is needed for it: an internal answer, the standing of an
// address that gave one over http, and, where no internal beacon answered, any external answer. An http
// answer of an internal beacon does not count when it came from an exposed address, or from one that gave a
// certificate for another name in another internal beacon's place, unless it is vouched for; of the external
// ones it does not outweigh a portal. Any thread; no state.
[[nodiscard]] std::optional<LocationDecision> DecideLocation(const StoreFindings& findings,
                                                             const StandingOf& standingOf,
                                                             const TunnelTo& tunnelTo);

}  // namespace Wayfinding

#pragma once

#include <map>
#include <string>

namespace Wayfinding {

struct ProbeOutcome;

// What a round knows of an address that answered over http in an internal beacon's name. A portal that
// resolves every name to itself does so, but it answers in the name of external beacons too.
enum class PeerStanding {
  Clear,    // answered for no external beacon
  Open,     // a beacon that is being asked may still tell
  Exposed,  // answered for an external beacon, of whichever store and whatever it said
  Vouched,  // gave a certificate that verified for a beacon's name, and so is no portal
};

// Gathers the standings of a round's peers. One thread.
class PeerStandings {
 public:
  // `asExternal`: whether a store names the beacon as an external one. Returns whether a standing changed.
  bool Take(const ProbeOutcome& outcome, bool asExternal);
  // Of the outcomes so far; never Open.
  [[nodiscard]] PeerStanding Of(const std::string& address) const;

 private:
  bool Raise(const std::string& address, PeerStanding standing);

  std::map<std::string, PeerStanding> standings_;
};

}  // namespace Wayfinding

#include "libs/Wayfinder/Deciding/PeerStandings.h"

#include "libs/Wayfinder/Probing/ProbeOutcome.h"

namespace Wayfinding {

bool PeerStandings::Take(const ProbeOutcome& outcome, bool asExternal) {
  bool changed = false;
  if (asExternal) {
    for (const std::string& address : outcome.heardFrom)
      changed = Raise(address, PeerStanding::Exposed) || changed;
  }
  if (outcome.answer == ProbeAnswer::Answered && outcome.proven)
    changed = Raise(outcome.peer, PeerStanding::Vouched) || changed;
  return changed;
}

bool PeerStandings::Raise(const std::string& address, PeerStanding standing) {
  PeerStanding& known = standings_[address];
  if (known >= standing) return false;
  known = standing;
  return true;
}

PeerStanding PeerStandings::Of(const std::string& address) const {
  const auto found = standings_.find(address);
  return found == standings_.end() ? PeerStanding::Clear : found->second;
}

}  // namespace Wayfinding

#pragma once

#include "libs/Wayfinder/Deciding/LocationRule.h"
#include "libs/Wayfinder/Deciding/PeerStandings.h"
#include "libs/Wayfinder/Deciding/RoundPlan.h"
#include "libs/Wayfinder/Network/NetworkState.h"
#include "libs/Wayfinder/Probing/ProbeOutcome.h"
#include "libs/Wayfinder/Probing/ProbeRound.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace Wayfinding {

class HostLookups;

// Asks the beacons of all stores once, and decides each store's location as soon as its own beacons allow.
// May be repeated for the stores without an answer. One thread.
class LocationRound {
 public:
  using Decided = std::function<void(std::size_t store, const LocationDecision& decision)>;

  // `network`: nothing when it is not known, which counts as usable. Without a usable network only loopback
  // beacons are asked. `decided` is called for each store, from Advance or CutOff, and again if what another
  // store's beacon says later gives the lie to it.
  LocationRound(const std::vector<StoreBeacons>& stores, std::optional<NetworkState> network,
                HostLookups& lookups, Decided decided);

  // Does what can be done without waiting.
  void Advance();
  // Open answers count as none from now on: decides what is undecided.
  void CutOff();

  [[nodiscard]] bool IsFinished() const { return probes_->IsFinished(); }
  // To be called when it is finished or cut off.
  void End() { probes_.reset(); }
  // The stores that were asked for and have no answer or a portal's.
  [[nodiscard]] std::set<std::size_t> Unanswered() const;
  // Asks for those stores again; what was heard for the others stands. Only after End.
  void Repeat();

  // Takes another list in place of the one with that number, and asks nobody any more. What was heard stands
  // for the stores that have not changed since, unless it is not yet all.
  void TakeList(const std::vector<StoreBeacons>& stores, std::uint64_t number);
  // Whether there are stores that Ask would ask for, or judge again.
  [[nodiscard]] bool HasOpenStores() const;
  // Asks for the stores that are undecided, and judges those again for which other stores' answers count.
  void Ask();

  // May ask NetworkManager, once for a link in each round.
  [[nodiscard]] bool IsTunnel(const NetworkLink& link);

  // As ProbeRound::Wait.
  void Wait(std::span<const int> descriptors, std::chrono::milliseconds limit) {
    probes_->Wait(descriptors, limit);
  }

 private:
  struct State {
    std::size_t openInternal = 0;
    std::size_t openExternal = 0;
    bool wasAsked = false;
    std::optional<NetworkLocation> location;

    [[nodiscard]] bool HasAnswer() const;
  };

  [[nodiscard]] std::vector<std::optional<ProbeOutcome>> TakeOutcomes(const RoundPlan& plan);
  std::vector<ProbeRound::Question> ChooseQuestions();
  [[nodiscard]] std::vector<std::size_t> UndecidedOwners(const RoundPlan::Beacon& beacon) const;
  [[nodiscard]] bool CanBeAsked(const RoundPlan::Beacon& beacon) const;
  void SettleUnasked();
  void Settle(std::size_t beacon, ProbeOutcome outcome);
  void Recount(const RoundPlan::Owner& owner, bool proven);
  void DecideAgain();
  void Decide(std::size_t store);
  [[nodiscard]] StoreFindings FindingsFor(std::size_t store) const;
  [[nodiscard]] std::vector<const ProbeOutcome*> OutcomesOf(const std::vector<std::size_t>& beacons) const;
  [[nodiscard]] PeerStanding StandingOf(const std::string& address) const;
  [[nodiscard]] std::string TunnelTo(const std::string& address);

  RoundPlan plan_;
  std::vector<std::string> urls_;  // of the stores
  std::optional<NetworkState> network_;
  HostLookups& lookups_;
  Decided decided_;
  std::vector<std::optional<ProbeOutcome>> outcomes_;  // one for each beacon of the plan
  std::vector<State> states_;                          // one for each store
  PeerStandings peers_;
  bool standingsChanged_ = false;
  std::set<std::size_t> leaning_;               // stores with internal answers that could be a portal's
  std::set<std::size_t> doubtful_;              // of them, those that wait for others' answers only
  std::vector<std::size_t> asked_;              // beacons of the plan, in the order of asking
  std::map<std::string, std::string> tunnels_;  // by address, as found in this round
  std::map<int, bool> verdicts_;                // NetworkManager's, by link
  bool begun_ = false;
  bool isCutOff_ = false;
  std::optional<ProbeRound> probes_;
};

}  // namespace Wayfinding

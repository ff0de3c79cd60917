#pragma once

#include "libs/Wayfinder/Deciding/LocationRule.h"
#include "libs/Wayfinder/Network/NetworkState.h"
#include "libs/Wayfinder/Probing/BeaconAddress.h"
#include "libs/Wayfinder/Probing/ProbeOutcome.h"
#include "libs/Wayfinder/Probing/ProbeRound.h"
#include "libs/Wayfinder/StoreBeacons.h"

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

// Decides which beacons of a list of stores are to be asked, and from their answers each store's location, as
// soon as they allow. One network, one thread.
class LocationRound {
 public:
  using Decided = std::function<void(const StorePtr& store, const LocationDecision& decision)>;

  // `network`: nothing when it is not known, which counts as usable. Without a usable network only loopback
  // beacons are asked. `decided` is called for each store, from Advance or CutOff, and again if what another
  // store's beacon says later gives the lie to it.
  LocationRound(std::optional<NetworkState> network, HostLookups& lookups, Decided decided);

  // Takes a list in place of the one before, and asks nobody any more. What was heard stands for the stores
  // that are in both.
  void TakeList(const std::vector<StorePtr>& list);
  // Asks the beacons that are open, and judges those stores again for which other stores' answers count.
  void Ask();
  // Asks once more for the stores without an answer.
  void Repeat();

  // Does what can be done without waiting; while it is asking.
  void Advance();
  // What is open counts as no answer from now on: decides what is undecided.
  void CutOff();
  [[nodiscard]] bool IsAsking() const { return probes_.has_value(); }
  // As ProbeRound::Wait; while it is asking.
  void Wait(std::span<const int> descriptors, std::chrono::milliseconds limit) {
    probes_->Wait(descriptors, limit);
  }

  // The stores that can be asked for and have no answer or a portal's.
  [[nodiscard]] std::set<StorePtr> Unanswered() const;
  // May ask NetworkManager, once for a link each time that beacons are asked.
  [[nodiscard]] bool IsTunnel(const NetworkLink& link);

 private:
  // One mention of a beacon by a store.
  struct Owner {
    std::size_t store = 0;
    bool isInternal = false;
  };
  // Each once, however many stores name it.
  struct Beacon {
    BeaconAddress address;  // without URLs: nothing that could be asked
    std::string text;       // as the first store that names it spells it
    std::vector<Owner> owners = {};
    std::optional<ProbeOutcome> outcome = {};  // nothing while it is open
  };
  struct Mention {
    Beacon* beacon = nullptr;
    bool isInternal = false;
  };
  struct Store {
    StorePtr named;
    std::vector<Mention> beacons = {};  // in the order of asking
    std::optional<LocationDecision> decision = {};

    // On internal answers that could be a portal's.
    [[nodiscard]] bool Leans() const;
    // Whether a decision, or another one, may be possible.
    [[nodiscard]] bool CanBeJudged() const;
    [[nodiscard]] bool HasAnswer() const;
    [[nodiscard]] std::vector<const ProbeOutcome*> Outcomes(bool internal) const;
  };
  class Reader;

  [[nodiscard]] bool CanBeAsked(const Beacon& beacon) const;
  [[nodiscard]] bool IsUnanswered(const Store& store) const;
  std::vector<ProbeRound::Question> ChooseQuestions();
  void Settle(Beacon& beacon, ProbeOutcome outcome);
  void TakeStanding(const Beacon& beacon);
  void DecideStores();
  void Decide(std::size_t place);
  [[nodiscard]] PeerStanding StandingOf(const std::string& address) const;
  [[nodiscard]] std::string TunnelTo(const std::string& address);

  std::optional<NetworkState> network_;
  HostLookups& lookups_;
  Decided decided_;
  std::map<std::string, Beacon> beacons_;  // by their addresses' keys, by the text where it is no address
  std::vector<Store> stores_;
  std::vector<Beacon*> asked_;                  // by the number of the question
  std::set<std::string> exposed_;               // addresses that said anything in an external beacon's place
  std::set<std::string> vouched_;               // addresses that proved to be a beacon
  bool standingsChanged_ = false;               // of either kind
  std::set<std::size_t> toDecide_;              // stores whose decision may have become possible
  std::map<std::string, std::string> tunnels_;  // by address
  std::map<int, bool> verdicts_;                // NetworkManager's, by link
  std::optional<ProbeRound> probes_;
};

}  // namespace Wayfinding

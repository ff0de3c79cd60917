#include "libs/Wayfinder/Deciding/LocationRule.h"

#include "libs/Wayfinder/Probing/BeaconAddress.h"
#include "libs/Wayfinder/Probing/ProbeOutcome.h"

#include <algorithm>
#include <set>
#include <utility>

namespace Wayfinding {

using Wording::Message;
using Wording::Worded;

namespace {

using Outcomes = std::vector<const ProbeOutcome*>;

bool IsSettled(const Outcomes& outcomes) {
  return std::find(outcomes.begin(), outcomes.end(), nullptr) == outcomes.end();
}

bool IsAnswer(const ProbeOutcome& outcome) {
  return outcome.answer == ProbeAnswer::Answered;
}

// The settled outcomes of one kind of a store's beacons.
class Count {
 public:
  explicit Count(const Outcomes& outcomes, const std::function<bool(const ProbeOutcome&)>& counts = IsAnswer)
      : all_(outcomes.size()) {
    for (const ProbeOutcome* outcome : outcomes) {
      if (counts(*outcome)) {
        answered_.push_back(outcome);
      } else if (firstOther_ == nullptr) {
        firstOther_ = outcome;
      }
    }
  }

  [[nodiscard]] const Outcomes& Answered() const { return answered_; }
  [[nodiscard]] bool AllAnswered() const { return answered_.size() == all_; }
  [[nodiscard]] bool IsProven() const {
    return std::any_of(answered_.begin(), answered_.end(),
                       [](const ProbeOutcome* outcome) { return outcome->proven; });
  }
  [[nodiscard]] Message InternalWords() const {
    if (firstOther_ == nullptr) return Worded("{answered} of {all} internal beacons answered", Numbers());
    return Worded("{answered} of {all} internal beacons answered ({reason})", NumbersAndReason());
  }
  [[nodiscard]] Message ExternalWords() const {
    if (firstOther_ == nullptr) return Worded("{answered} of {all} external beacons answered", Numbers());
    return Worded("{answered} of {all} external beacons answered ({reason})", NumbersAndReason());
  }

 private:
  [[nodiscard]] std::vector<Wording::Place> Numbers() const {
    return {{"answered", std::to_string(answered_.size())}, {"all", std::to_string(all_)}};
  }
  // With why the first of the others is none of them.
  [[nodiscard]] std::vector<Wording::Place> NumbersAndReason() const {
    std::vector<Wording::Place> places = Numbers();
    places.push_back({"reason", IsAnswer(*firstOther_) ? Worded("{address} answers for others too",
                                                                {{"address", firstOther_->peer}})
                                                       : firstOther_->reason});
    return places;
  }

  std::size_t all_;
  Outcomes answered_;
  const ProbeOutcome* firstOther_ = nullptr;
};

// A redirect in an internal beacon's place may be its own server's way, a certificate for another name is
// not.
std::set<std::string> Impostors(const Outcomes& internal) {
  std::set<std::string> peers;
  for (const ProbeOutcome* outcome : internal) {
    if (outcome->answer == ProbeAnswer::SomebodyElse && outcome->proven) peers.insert(outcome->peer);
  }
  return peers;
}

// The internal answers that are to be believed; nothing while a standing is open.
std::optional<Count> CountInternal(const Outcomes& internal, const StandingOf& standingOf) {
  const std::set<std::string> impostors = Impostors(internal);
  bool isOpen = false;
  Count count(internal, [&](const ProbeOutcome& outcome) {
    if (isOpen || !IsAnswer(outcome)) return false;
    // On the loopback address every server is the same machine, and none of them a portal.
    if (outcome.proven || IsLoopbackHost(outcome.peer)) return true;
    const PeerStanding standing = standingOf(outcome.peer);
    isOpen = standing == PeerStanding::Open;
    return standing == PeerStanding::Vouched ||
           (standing == PeerStanding::Clear && !impostors.contains(outcome.peer));
  });
  if (isOpen) return std::nullopt;
  return count;
}

LocationDecision DecideInside(const Count& internal, const TunnelTo& tunnelTo) {
  const Message counts = internal.InternalWords();
  for (const ProbeOutcome* outcome : internal.Answered()) {
    const std::string tunnel = tunnelTo(outcome->peer);
    if (tunnel.empty()) continue;
    return {kVPN, Worded("VPN, {counts}, the route to {address} leaves through {tunnel}",
                         {{"counts", counts}, {"address", outcome->peer}, {"tunnel", tunnel}})};
  }
  if (internal.AllAnswered()) return {kLAN, Worded("LAN, {counts}", {{"counts", counts}})};
  return {kPartlyInternal, Worded("partly internal, {counts}", {{"counts", counts}})};
}

LocationDecision DecideOutside(const StoreFindings& findings, const Count& internal) {
  const Count external(findings.external);
  const auto portal =
      std::find_if(findings.external.begin(), findings.external.end(),
                   [](const auto* outcome) { return outcome->answer == ProbeAnswer::SomebodyElse; });
  if (portal != findings.external.end() && !external.IsProven()) {
    return {kHotspot, Worded("hotspot, {counts}, an external one was answered by somebody else ({reason})",
                             {{"counts", internal.InternalWords()}, {"reason", (*portal)->reason}})};
  }
  const std::vector<Wording::Place> counts{{"internal", internal.InternalWords()},
                                           {"external", external.ExternalWords()}};
  if (!external.Answered().empty()) return {kOutside, Worded("outside, {internal}, {external}", counts)};
  return {kNone, findings.networkIsUsable
                     ? Worded("none, {internal}, {external}", counts)
                     : Worded("none, no usable network, {internal}, {external}", counts)};
}

}  // namespace

std::optional<LocationDecision> DecideLocation(const StoreFindings& findings, const StandingOf& standingOf,
                                               const TunnelTo& tunnelTo) {
  if (!IsSettled(findings.internal)) return std::nullopt;
  const std::optional<Count> internal = CountInternal(findings.internal, standingOf);
  if (!internal) return std::nullopt;
  if (!internal->Answered().empty()) return DecideInside(*internal, tunnelTo);
  if (!IsSettled(findings.external)) return std::nullopt;
  return DecideOutside(findings, *internal);
}

}  // namespace Wayfinding

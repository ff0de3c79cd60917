#include "libs/Wayfinder/Deciding/LocationRule.h"

#include "libs/Wayfinder/Probing/BeaconAddress.h"
#include "libs/Wayfinder/Probing/ProbeOutcome.h"

#include <algorithm>
#include <map>
#include <utility>

namespace Wayfinding {
namespace {

using Outcomes = std::vector<const ProbeOutcome*>;

bool IsSettled(const Outcomes& outcomes) {
  return std::find(outcomes.begin(), outcomes.end(), nullptr) == outcomes.end();
}

bool Is(const ProbeOutcome* outcome, ProbeAnswer answer) {
  return outcome != nullptr && outcome->answer == answer;
}

const ProbeOutcome* FirstElse(const Outcomes& outcomes) {
  const auto found = std::find_if(outcomes.begin(), outcomes.end(), [](const ProbeOutcome* outcome) {
    return Is(outcome, ProbeAnswer::SomebodyElse);
  });
  return found == outcomes.end() ? nullptr : *found;
}

// On the loopback address every server is the same machine, and none of them a portal.
bool CouldBePortal(const ProbeOutcome& outcome) {
  return !outcome.proven && !IsLoopbackHost(outcome.peer);
}

// A redirect in an internal beacon's place may be its own server's way, a certificate for another name is
// not.
bool HasImpostorAt(const std::string& peer, const Outcomes& internal) {
  return std::any_of(internal.begin(), internal.end(), [&peer](const ProbeOutcome* outcome) {
    return Is(outcome, ProbeAnswer::SomebodyElse) && outcome->proven && outcome->peer == peer;
  });
}

// Whether an answer of an internal beacon is to be believed.
class Credit {
 public:
  Credit(const Outcomes& internal, const StandingOf& standingOf) {
    for (const ProbeOutcome* outcome : internal) {
      if (!Is(outcome, ProbeAnswer::Answered) || !CouldBePortal(*outcome)) continue;
      const auto [entry, isNew] = standings_.try_emplace(outcome->peer);
      if (!isNew) continue;
      entry->second = standingOf(outcome->peer);
      if (entry->second == PeerStanding::Clear && HasImpostorAt(outcome->peer, internal))
        entry->second = PeerStanding::Exposed;
    }
  }

  [[nodiscard]] bool IsGivenTo(const ProbeOutcome& outcome) const {
    const auto found = standings_.find(outcome.peer);
    return outcome.proven || found == standings_.end() || found->second != PeerStanding::Exposed;
  }
  // Whether it depends on what is being asked somewhere else.
  [[nodiscard]] bool IsOpen() const {
    return std::any_of(standings_.begin(), standings_.end(),
                       [](const auto& entry) { return entry.second == PeerStanding::Open; });
  }
  // Whether no answer of an external beacon can change it.
  [[nodiscard]] bool IsFinal() const {
    return std::all_of(standings_.begin(), standings_.end(),
                       [](const auto& entry) { return entry.second == PeerStanding::Vouched; });
  }

 private:
  std::map<std::string, PeerStanding> standings_;  // of the peers that could be a portal
};

class Count {
 public:
  // Without `credit` every answer counts.
  explicit Count(const Outcomes& outcomes, const Credit* credit = nullptr) : all_(outcomes.size()) {
    for (const ProbeOutcome* outcome : outcomes) {
      if (Is(outcome, ProbeAnswer::Answered) && (credit == nullptr || credit->IsGivenTo(*outcome))) {
        answered_.push_back(outcome);
      } else if (outcome != nullptr && firstSilent_ == nullptr) {
        firstSilent_ = outcome;
      }
    }
  }

  [[nodiscard]] const Outcomes& Answered() const { return answered_; }
  [[nodiscard]] bool AllAnswered() const { return answered_.size() == all_; }
  [[nodiscard]] bool IsProven() const {
    return std::any_of(answered_.begin(), answered_.end(),
                       [](const auto* outcome) { return outcome->proven; });
  }
  [[nodiscard]] std::string Text(const std::string& kind) const {
    std::string text =
        std::to_string(answered_.size()) + " of " + std::to_string(all_) + " " + kind + " beacons answered";
    if (firstSilent_ == nullptr) return text;
    const bool unmasked = firstSilent_->answer == ProbeAnswer::Answered;
    return text + " (" + (unmasked ? firstSilent_->peer + " answers for others too" : firstSilent_->reason) +
           ")";
  }

 private:
  std::size_t all_;
  Outcomes answered_;
  const ProbeOutcome* firstSilent_ = nullptr;
};

LocationDecision DecideInside(const Count& internal, const TunnelTo& tunnelTo) {
  const std::string counts = internal.Text("internal");
  for (const ProbeOutcome* outcome : internal.Answered()) {
    const std::string tunnel = tunnelTo(outcome->peer);
    if (tunnel.empty()) continue;
    std::string reason = "VPN, " + counts;
    reason.append(", the route to ").append(outcome->peer).append(" leaves through ").append(tunnel);
    return {NetworkLocation::VPN, std::move(reason)};
  }
  if (internal.AllAnswered()) return {NetworkLocation::LAN, "LAN, " + counts};
  return {NetworkLocation::PartlyInternal, "partly internal, " + counts};
}

LocationDecision DecideOutside(const StoreFindings& findings, const Count& internal) {
  const Count external(findings.external);
  const ProbeOutcome* const portal = FirstElse(findings.external);
  const std::string counts = internal.Text("internal") + ", " + external.Text("external");
  if (portal != nullptr && !external.IsProven()) {
    return {NetworkLocation::Hotspot, "hotspot, " + internal.Text("internal") +
                                          ", an external one was answered by somebody else (" +
                                          portal->reason + ")"};
  }
  if (!external.Answered().empty()) return {NetworkLocation::Outside, "outside, " + counts};
  const char* const network = findings.networkIsUsable ? "none, " : "none, no usable network, ";
  return {NetworkLocation::None, network + counts};
}

}  // namespace

std::optional<LocationDecision> DecideLocation(const StoreFindings& findings, const StandingOf& standingOf,
                                               const TunnelTo& tunnelTo) {
  if (!IsSettled(findings.internal)) return std::nullopt;
  const Credit credit(findings.internal, standingOf);
  if (credit.IsOpen()) return std::nullopt;
  const bool complete = IsSettled(findings.external);
  const Count internal(findings.internal, &credit);
  if (!internal.Answered().empty()) {
    if (!complete && !credit.IsFinal()) return std::nullopt;
    return DecideInside(internal, tunnelTo);
  }
  // Nothing outweighs a proven external answer.
  if (!complete && !Count(findings.external).IsProven()) return std::nullopt;
  return DecideOutside(findings, internal);
}

}  // namespace Wayfinding

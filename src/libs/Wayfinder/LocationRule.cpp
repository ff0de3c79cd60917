#include "libs/Wayfinder/LocationRule.h"

#include "libs/Wayfinder/BeaconAddress.h"
#include "libs/Wayfinder/ProbeOutcome.h"

#include <algorithm>
#include <iterator>
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

// Those that show a portal at work. A redirect in an internal beacon's place may be its own server's way.
Outcomes WitnessesAgainstInternal(const StoreFindings& findings) {
  Outcomes witnesses = findings.external;
  std::copy_if(findings.internal.begin(), findings.internal.end(), std::back_inserter(witnesses),
               [](const ProbeOutcome* outcome) { return outcome != nullptr && outcome->proven; });
  return witnesses;
}

class Count {
 public:
  Count(const Outcomes& outcomes, const Outcomes& witnesses) : all_(outcomes.size()) {
    for (const ProbeOutcome* outcome : outcomes) {
      if (Is(outcome, ProbeAnswer::Answered) && !IsUnmasked(*outcome, witnesses)) {
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
  static bool IsUnmasked(const ProbeOutcome& outcome, const Outcomes& witnesses) {
    return CouldBePortal(outcome) &&
           std::any_of(witnesses.begin(), witnesses.end(), [&outcome](const ProbeOutcome* witness) {
             return Is(witness, ProbeAnswer::SomebodyElse) && witness->peer == outcome.peer;
           });
  }

  std::size_t all_;
  Outcomes answered_;
  const ProbeOutcome* firstSilent_ = nullptr;
};

// Answers that no open external beacon can unmask.
bool StandsAlone(const Outcomes& internal) {
  return std::none_of(internal.begin(), internal.end(), [](const ProbeOutcome* outcome) {
    return outcome->answer == ProbeAnswer::Answered && CouldBePortal(*outcome);
  });
}

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
  const Count external(findings.external, {});
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

std::optional<LocationDecision> DecideLocation(const StoreFindings& findings, const TunnelTo& tunnelTo) {
  if (!IsSettled(findings.internal)) return std::nullopt;
  const bool complete = IsSettled(findings.external);
  const Count internal(findings.internal, WitnessesAgainstInternal(findings));
  if (!internal.Answered().empty()) {
    if (!complete && !StandsAlone(findings.internal)) return std::nullopt;
    return DecideInside(internal, tunnelTo);
  }
  // What is open can only take away internal answers, and nothing outweighs a proven external one.
  if (!complete && !Count(findings.external, {}).IsProven()) return std::nullopt;
  return DecideOutside(findings, internal);
}

}  // namespace Wayfinding

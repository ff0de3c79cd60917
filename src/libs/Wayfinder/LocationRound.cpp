#include "libs/Wayfinder/LocationRound.h"

#include "libs/Wayfinder/LinkKind.h"
#include "libs/Wayfinder/NetworkManagerQuery.h"

#include <algorithm>
#include <utility>

namespace Wayfinding {
namespace {

// The numeric addresses of a link.
std::vector<std::string> AddressesOf(const NetworkState& network, const std::string& linkName) {
  std::vector<std::string> addresses;
  for (const std::string& entry : network.addresses) {
    if (!entry.starts_with(linkName + " ")) continue;
    const std::size_t first = linkName.size() + 1;
    addresses.push_back(entry.substr(first, entry.find('/') - first));
  }
  return addresses;
}

std::vector<std::string> URLsOf(const std::vector<StoreBeacons>& stores) {
  std::vector<std::string> urls;
  urls.reserve(stores.size());
  for (const StoreBeacons& store : stores) urls.push_back(store.url);
  return urls;
}

bool IsUsable(const std::optional<NetworkState>& network) {
  return !network || network->IsUsable();
}

}  // namespace

LocationRound::LocationRound(const std::vector<StoreBeacons>& stores, std::optional<NetworkState> network,
                             HostLookups& lookups, Decided decided)
    : plan_(PlanRound(stores)),
      network_(std::move(network)),
      decided_(std::move(decided)),
      outcomes_(plan_.beacons.size()),
      states_(plan_.stores.size()),
      probes_(ChooseProbes(), URLsOf(stores), lookups, [this](std::size_t probe, ProbeOutcome outcome) {
        Settle(asked_[probe], std::move(outcome));
      }) {
  for (std::size_t i = 0; i < plan_.stores.size(); ++i) {
    states_[i].openInternal = plan_.stores[i].internal.size();
    states_[i].openExternal = plan_.stores[i].external.size();
  }
}

std::vector<ProbeRound::Question> LocationRound::ChooseProbes() {
  std::vector<ProbeRound::Question> chosen;
  const bool usable = IsUsable(network_);
  for (std::size_t i = 0; i < plan_.beacons.size(); ++i) {
    const RoundPlan::Beacon& beacon = plan_.beacons[i];
    if (beacon.address.urls.empty() || (!usable && !beacon.address.isLoopback)) continue;
    asked_.push_back(i);
    ProbeRound::Question& question = chosen.emplace_back(ProbeRound::Question{.beacon = beacon.address});
    for (const RoundPlan::Owner& owner : beacon.owners) question.stores.push_back(owner.store);
  }
  return chosen;
}

void LocationRound::Advance() {
  if (!std::exchange(begun_, true)) SettleUnasked();
  probes_.Advance();
  DecideAgain();
}

void LocationRound::SettleUnasked() {
  auto nextAsked = asked_.begin();
  for (std::size_t i = 0; i < plan_.beacons.size(); ++i) {
    if (nextAsked != asked_.end() && *nextAsked == i) {
      ++nextAsked;
      continue;
    }
    const RoundPlan::Beacon& beacon = plan_.beacons[i];
    const bool isAddress = !beacon.address.urls.empty();
    Settle(i, {.reason = beacon.text + (isAddress ? ": not asked" : ": no address")});
  }
}

void LocationRound::CutOff() {
  if (!std::exchange(begun_, true)) SettleUnasked();
  isCutOff_ = true;
  for (std::size_t i = 0; i < outcomes_.size(); ++i) {
    if (!outcomes_[i]) Settle(i, {.reason = plan_.beacons[i].text + ": no answer in time"});
  }
  DecideAgain();
}

void LocationRound::Settle(std::size_t beacon, ProbeOutcome outcome) {
  const std::vector<RoundPlan::Owner>& owners = plan_.beacons[beacon].owners;
  const bool isExternal = std::any_of(owners.begin(), owners.end(),
                                      [](const RoundPlan::Owner& owner) { return owner.asExternal > 0; });
  if (peers_.Take(outcome, isExternal)) standingsChanged_ = true;
  const bool answered = outcome.answer == ProbeAnswer::Answered;
  const bool proven = answered && outcome.proven;
  outcomes_[beacon] = std::move(outcome);
  for (const RoundPlan::Owner& owner : owners) {
    if (answered && !proven && owner.asInternal > 0) leaning_.insert(owner.store);
    Recount(owner, proven);
  }
}

// A decision is tried when it may have become possible, and not for each of thousands of beacons.
void LocationRound::Recount(const RoundPlan::Owner& owner, bool proven) {
  State& state = states_[owner.store];
  if (state.location) return;
  state.openInternal -= owner.asInternal;
  state.openExternal -= owner.asExternal;
  if (state.openInternal == 0 && (owner.asInternal > 0 || state.openExternal == 0 || proven))
    Decide(owner.store);
}

void LocationRound::DecideAgain() {
  for (const std::size_t store : std::exchange(doubtful_, {})) Decide(store);
  if (!std::exchange(standingsChanged_, false)) return;
  for (const std::size_t store : leaning_) {
    if (states_[store].location) Decide(store);
  }
}

std::vector<const ProbeOutcome*> LocationRound::OutcomesOf(const std::vector<std::size_t>& beacons) const {
  std::vector<const ProbeOutcome*> outcomes;
  outcomes.reserve(beacons.size());
  for (const std::size_t beacon : beacons)
    outcomes.push_back(outcomes_[beacon] ? &*outcomes_[beacon] : nullptr);
  return outcomes;
}

StoreFindings LocationRound::FindingsFor(std::size_t store) const {
  return {.internal = OutcomesOf(plan_.stores[store].internal),
          .external = OutcomesOf(plan_.stores[store].external),
          .networkIsUsable = IsUsable(network_)};
}

void LocationRound::Decide(std::size_t store) {
  const std::optional<LocationDecision> decision = DecideLocation(
      FindingsFor(store), [this](const std::string& address) { return StandingOf(address); },
      [this](const std::string& address) { return TunnelTo(address); });
  State& state = states_[store];
  if (!decision) {
    if (!state.location && state.openInternal == 0 && state.openExternal == 0) doubtful_.insert(store);
    return;
  }
  if (state.location == decision->location) return;
  state.location = decision->location;
  decided_(store, *decision);
}

bool LocationRound::HadAnswer() const {
  // Behind a portal the beacons themselves are still silent, whatever it says in their names.
  return std::any_of(states_.begin(), states_.end(), [](const State& state) {
    return state.location && *state.location != NetworkLocation::None &&
           *state.location != NetworkLocation::Hotspot;
  });
}

PeerStanding LocationRound::StandingOf(const std::string& address) const {
  const PeerStanding standing = peers_.Of(address);
  if (standing != PeerStanding::Vouched && !isCutOff_ && probes_.MayHearFrom(address))
    return PeerStanding::Open;
  return standing;
}

std::string LocationRound::TunnelTo(const std::string& address) {
  const auto [found, isNew] = tunnels_.try_emplace(address);
  if (!isNew) return found->second;
  const std::optional<Route> route = RouteTo(address);
  if (route && IsTunnel(route->link)) found->second = route->link.name + " (" + route->link.kind + ")";
  return found->second;
}

bool LocationRound::IsTunnel(const NetworkLink& link) {
  const TunnelSense sense = SenseOfLink(link.kind, link.arpType);
  if (sense != TunnelSense::AskNetworkManager) return sense == TunnelSense::Yes;
  const auto [verdict, isNew] = verdicts_.try_emplace(link.index);
  if (isNew) {
    verdict->second = NetworkManagerCallsVPN(
        link.name, network_ ? AddressesOf(*network_, link.name) : std::vector<std::string>());
  }
  return verdict->second;
}

}  // namespace Wayfinding

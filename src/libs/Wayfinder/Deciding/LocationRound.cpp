#include "libs/Wayfinder/Deciding/LocationRound.h"

#include "libs/Wayfinder/Network/LinkKind.h"
#include "libs/Wayfinder/Network/NetworkManagerQuery.h"

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

// Whether a store names it as an external one.
bool IsExternal(const RoundPlan::Beacon& beacon) {
  return std::any_of(beacon.owners.begin(), beacon.owners.end(),
                     [](const RoundPlan::Owner& owner) { return owner.asExternal > 0; });
}

bool HasHeardAll(const RoundPlan::Store& store, const std::vector<std::optional<ProbeOutcome>>& outcomes) {
  const auto heard = [&outcomes](std::size_t beacon) { return outcomes[beacon].has_value(); };
  return std::all_of(store.internal.begin(), store.internal.end(), heard) &&
         std::all_of(store.external.begin(), store.external.end(), heard);
}

bool IsUsable(const std::optional<NetworkState>& network) {
  return !network || network->IsUsable();
}

}  // namespace

LocationRound::LocationRound(const std::vector<StoreBeacons>& stores, std::optional<NetworkState> network,
                             HostLookups& lookups, Decided decided)
    : plan_(PlanRound(stores)),
      urls_(URLsOf(stores)),
      network_(std::move(network)),
      lookups_(lookups),
      decided_(std::move(decided)),
      outcomes_(plan_.beacons.size()),
      states_(plan_.stores.size()) {
  Ask();
}

void LocationRound::Repeat() {
  for (State& state : states_) {
    if (state.wasAsked && !state.HasAnswer()) state.location.reset();
  }
  Ask();
}

void LocationRound::TakeList(const std::vector<StoreBeacons>& stores, std::uint64_t number) {
  std::map<std::string, std::size_t> placesBefore;
  for (std::size_t i = 0; i < urls_.size(); ++i) placesBefore.emplace(urls_[i], i);
  RoundPlan plan = PlanRound(stores);
  outcomes_ = TakeOutcomes(plan);
  std::vector<State> states(stores.size());
  std::set<std::size_t> leaning;
  for (std::size_t i = 0; i < stores.size(); ++i) {
    if (stores[i].since > number || !HasHeardAll(plan.stores[i], outcomes_)) continue;
    const std::size_t before = placesBefore.at(stores[i].url);
    states[i] = states_[before];
    if (leaning_.contains(before)) leaning.insert(i);
  }
  plan_ = std::move(plan);
  urls_ = URLsOf(stores);
  states_ = std::move(states);
  leaning_ = std::move(leaning);
  doubtful_.clear();
  probes_.reset();
}

// What was heard of the plan's beacons, which is no more in this round's place of them.
std::vector<std::optional<ProbeOutcome>> LocationRound::TakeOutcomes(const RoundPlan& plan) {
  std::map<std::string, std::size_t> heard;
  for (std::size_t i = 0; i < outcomes_.size(); ++i) {
    if (outcomes_[i]) heard.emplace(plan_.beacons[i].address.Key(), i);
  }
  std::vector<std::optional<ProbeOutcome>> outcomes(plan.beacons.size());
  for (std::size_t i = 0; i < outcomes.size(); ++i) {
    const auto own = heard.find(plan.beacons[i].address.Key());
    if (own != heard.end()) outcomes[i] = std::move(outcomes_[own->second]);
  }
  return outcomes;
}

bool LocationRound::HasOpenStores() const {
  return !leaning_.empty() ||
         std::any_of(states_.begin(), states_.end(), [](const State& state) { return !state.location; });
}

void LocationRound::Ask() {
  begun_ = isCutOff_ = false;
  peers_ = {};
  standingsChanged_ = true;  // also where those are gone that gave a standing
  tunnels_.clear();
  verdicts_.clear();
  for (std::size_t i = 0; i < states_.size(); ++i) {
    if (states_[i].location) continue;
    states_[i] = {.openInternal = plan_.stores[i].internal.size(),
                  .openExternal = plan_.stores[i].external.size(),
                  .location = {}};
  }
  probes_.emplace(ChooseQuestions(), urls_, lookups_, [this](std::size_t question, ProbeOutcome outcome) {
    Settle(asked_[question], std::move(outcome));
  });
}

std::vector<ProbeRound::Question> LocationRound::ChooseQuestions() {
  std::vector<ProbeRound::Question> questions;
  asked_.clear();
  for (std::size_t i = 0; i < plan_.beacons.size(); ++i) {
    const RoundPlan::Beacon& beacon = plan_.beacons[i];
    std::vector<std::size_t> owners = UndecidedOwners(beacon);
    if (owners.empty()) {
      peers_.Take(*outcomes_[i], IsExternal(beacon));
      continue;
    }
    outcomes_[i].reset();
    if (!CanBeAsked(beacon)) continue;
    for (const std::size_t owner : owners) states_[owner].wasAsked = true;
    asked_.push_back(i);
    questions.push_back({.beacon = beacon.address, .stores = std::move(owners)});
  }
  return questions;
}

std::vector<std::size_t> LocationRound::UndecidedOwners(const RoundPlan::Beacon& beacon) const {
  std::vector<std::size_t> owners;
  for (const RoundPlan::Owner& owner : beacon.owners) {
    if (!states_[owner.store].location) owners.push_back(owner.store);
  }
  return owners;
}

bool LocationRound::CanBeAsked(const RoundPlan::Beacon& beacon) const {
  return !beacon.address.urls.empty() && (IsUsable(network_) || beacon.address.isLoopback);
}

void LocationRound::Advance() {
  if (!std::exchange(begun_, true)) SettleUnasked();
  probes_->Advance();
  DecideAgain();
}

void LocationRound::SettleUnasked() {
  for (std::size_t i = 0; i < plan_.beacons.size(); ++i) {
    const RoundPlan::Beacon& beacon = plan_.beacons[i];
    if (outcomes_[i] || CanBeAsked(beacon)) continue;
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
  if (peers_.Take(outcome, IsExternal(plan_.beacons[beacon]))) standingsChanged_ = true;
  const bool answered = outcome.answer == ProbeAnswer::Answered;
  const bool proven = answered && outcome.proven;
  outcomes_[beacon] = std::move(outcome);
  for (const RoundPlan::Owner& owner : plan_.beacons[beacon].owners) {
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

// Behind a portal the beacons themselves are still silent, whatever it says in their names.
bool LocationRound::State::HasAnswer() const {
  return location && *location != NetworkLocation::None && *location != NetworkLocation::Hotspot;
}

std::set<std::size_t> LocationRound::Unanswered() const {
  std::set<std::size_t> unanswered;
  for (std::size_t i = 0; i < states_.size(); ++i) {
    if (states_[i].wasAsked && !states_[i].HasAnswer()) unanswered.insert(i);
  }
  return unanswered;
}

PeerStanding LocationRound::StandingOf(const std::string& address) const {
  const PeerStanding standing = peers_.Of(address);
  if (standing != PeerStanding::Vouched && !isCutOff_ && probes_->MayHearFrom(address))
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

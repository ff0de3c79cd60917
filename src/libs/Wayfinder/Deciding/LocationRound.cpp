#include "libs/Wayfinder/Deciding/LocationRound.h"

#include "libs/Wayfinder/Network/LinkKind.h"
#include "libs/Wayfinder/Network/NetworkManagerQuery.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

namespace Wayfinding {

using Wording::Worded;
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

bool IsUsable(const std::optional<NetworkState>& network) {
  return !network || network->IsUsable();
}

}  // namespace

// Reads the beacons of stores that are new.
class LocationRound::Reader {
 public:
  explicit Reader(std::map<std::string, Beacon>& beacons) : beacons_(beacons) {}

  // Internal and external beacons in turns, so that a store with many of one kind has the other asked, too.
  [[nodiscard]] Store Read(const StorePtr& named) {
    Store store{.named = named};
    const std::size_t levels = std::max(named->internal.size(), named->external.size());
    for (std::size_t level = 0; level < levels; ++level) {
      if (level < named->internal.size()) store.beacons.push_back({Find(named->internal[level]), true});
      if (level < named->external.size()) store.beacons.push_back({Find(named->external[level]), false});
    }
    return store;
  }

 private:
  Beacon* Find(const std::string& text) {
    const auto [known, isNew] = texts_.try_emplace(text);
    if (isNew) {
      BeaconAddress address = ParseBeaconAddress(text).value_or(BeaconAddress());
      const std::string key = address.urls.empty() ? text : address.Key();
      known->second = &beacons_.try_emplace(key, Beacon{std::move(address), text}).first->second;
      known->second->outcome.reset();
    }
    return known->second;
  }

  std::map<std::string, Beacon>& beacons_;
  // Stores of one company name the same beacons, and to read an address takes long.
  std::unordered_map<std::string, Beacon*> texts_;
};

LocationRound::LocationRound(std::optional<NetworkState> network, HostLookups& lookups, Decided decided)
    : network_(std::move(network)), lookups_(lookups), decided_(std::move(decided)) {}

void LocationRound::TakeList(const std::vector<StorePtr>& list) {
  probes_.reset();
  toDecide_.clear();
  for (auto& [key, beacon] : beacons_) beacon.owners.clear();
  std::map<StorePtr, Store> before;
  for (Store& store : std::exchange(stores_, {})) before.emplace(store.named, std::move(store));
  Reader reader(beacons_);
  for (const StorePtr& named : list) {
    const auto own = before.find(named);
    const Store& store =
        stores_.emplace_back(own == before.end() ? reader.Read(named) : std::move(own->second));
    for (const Mention& mention : store.beacons)
      mention.beacon->owners.push_back({.store = stores_.size() - 1, .isInternal = mention.isInternal});
  }
  std::erase_if(beacons_, [](const auto& entry) { return entry.second.owners.empty(); });
}

void LocationRound::Repeat() {
  for (Store& store : stores_) {
    if (!IsUnanswered(store)) continue;
    store.decision.reset();
    for (const Mention& mention : store.beacons) mention.beacon->outcome.reset();
  }
  Ask();
}

void LocationRound::Ask() {
  exposed_.clear();
  vouched_.clear();
  tunnels_.clear();
  verdicts_.clear();
  standingsChanged_ = true;  // also where those are gone that gave a standing
  for (auto& [key, beacon] : beacons_) {
    if (beacon.outcome) {
      TakeStanding(beacon);
    } else if (!CanBeAsked(beacon)) {
      Settle(beacon, {.reason = beacon.address.urls.empty()
                                    ? Worded("{beacon}: no address", {{"beacon", beacon.text}})
                                    : Worded("{beacon}: not asked", {{"beacon", beacon.text}})});
    }
  }
  std::vector<std::string> urls;
  for (const Store& store : stores_) urls.push_back(store.named->url);
  probes_.emplace(
      ChooseQuestions(), std::move(urls), lookups_,
      [this](std::size_t question, ProbeOutcome outcome) { Settle(*asked_[question], std::move(outcome)); });
}

std::vector<ProbeRound::Question> LocationRound::ChooseQuestions() {
  std::vector<ProbeRound::Question> questions;
  std::unordered_map<const Beacon*, std::size_t> places;
  asked_.clear();
  for (std::size_t i = 0; i < stores_.size(); ++i) {
    for (const Mention& mention : stores_[i].beacons) {
      if (mention.beacon->outcome) continue;
      const auto [place, isNew] = places.try_emplace(mention.beacon, questions.size());
      if (isNew) {
        asked_.push_back(mention.beacon);
        questions.push_back({.beacon = mention.beacon->address});
      }
      questions[place->second].stores.push_back(i);
    }
  }
  return questions;
}

bool LocationRound::CanBeAsked(const Beacon& beacon) const {
  return !beacon.address.urls.empty() && (IsUsable(network_) || beacon.address.isLoopback);
}

void LocationRound::Advance() {
  probes_->Advance();
  DecideStores();
  if (probes_->IsFinished()) probes_.reset();
}

void LocationRound::CutOff() {
  probes_.reset();
  for (auto& [key, beacon] : beacons_) {
    if (!beacon.outcome)
      Settle(beacon, {.reason = Worded("{beacon}: no answer in time", {{"beacon", beacon.text}})});
  }
  DecideStores();
}

// A decision is tried when it may have become possible, and not for each of thousands of beacons.
void LocationRound::Settle(Beacon& beacon, ProbeOutcome outcome) {
  beacon.outcome = std::move(outcome);
  TakeStanding(beacon);
  for (const Owner& owner : beacon.owners) {
    if (stores_[owner.store].CanBeJudged()) toDecide_.insert(owner.store);
  }
}

void LocationRound::TakeStanding(const Beacon& beacon) {
  const std::size_t before = exposed_.size() + vouched_.size();
  const ProbeOutcome& outcome = *beacon.outcome;
  const bool isExternal = std::any_of(beacon.owners.begin(), beacon.owners.end(),
                                      [](const Owner& owner) { return !owner.isInternal; });
  if (isExternal) exposed_.insert(outcome.heardFrom.begin(), outcome.heardFrom.end());
  if (outcome.answer == ProbeAnswer::Answered && outcome.proven) vouched_.insert(outcome.peer);
  if (exposed_.size() + vouched_.size() > before) standingsChanged_ = true;
}

void LocationRound::DecideStores() {
  if (std::exchange(standingsChanged_, false)) {
    for (std::size_t i = 0; i < stores_.size(); ++i) {
      if (stores_[i].CanBeJudged()) toDecide_.insert(i);
    }
  }
  for (const std::size_t store : std::exchange(toDecide_, {})) Decide(store);
}

void LocationRound::Decide(std::size_t place) {
  Store& store = stores_[place];
  std::optional<LocationDecision> decision = DecideLocation(
      {.internal = store.Outcomes(true),
       .external = store.Outcomes(false),
       .networkIsUsable = IsUsable(network_)},
      [this](const std::string& address) { return StandingOf(address); },
      [this](const std::string& address) { return TunnelTo(address); });
  if (!decision) {
    if (store.Leans()) toDecide_.insert(place);  // what it waits for need not be its own beacon
    return;
  }
  if (store.decision == decision) return;
  store.decision = std::move(decision);
  decided_(store.named, *store.decision);
}

bool LocationRound::Store::Leans() const {
  return std::any_of(beacons.begin(), beacons.end(), [](const Mention& mention) {
    const std::optional<ProbeOutcome>& outcome = mention.beacon->outcome;
    return mention.isInternal && outcome && outcome->answer == ProbeAnswer::Answered && !outcome->proven;
  });
}

bool LocationRound::Store::CanBeJudged() const {
  const auto isOpenInside = [](const Mention& mention) {
    return mention.isInternal && !mention.beacon->outcome;
  };
  return (!decision || Leans()) && std::none_of(beacons.begin(), beacons.end(), isOpenInside);
}

// Behind a portal the beacons themselves are still silent, whatever it says in their names.
bool LocationRound::Store::HasAnswer() const {
  return decision && decision->location != kNone && decision->location != kHotspot;
}

std::vector<const ProbeOutcome*> LocationRound::Store::Outcomes(bool internal) const {
  std::vector<const ProbeOutcome*> outcomes;
  for (const Mention& mention : beacons) {
    if (mention.isInternal == internal)
      outcomes.push_back(mention.beacon->outcome ? &*mention.beacon->outcome : nullptr);
  }
  return outcomes;
}

bool LocationRound::IsUnanswered(const Store& store) const {
  return !store.HasAnswer() &&
         std::any_of(store.beacons.begin(), store.beacons.end(),
                     [this](const Mention& mention) { return CanBeAsked(*mention.beacon); });
}

std::set<StorePtr> LocationRound::Unanswered() const {
  std::set<StorePtr> unanswered;
  for (const Store& store : stores_) {
    if (IsUnanswered(store)) unanswered.insert(store.named);
  }
  return unanswered;
}

PeerStanding LocationRound::StandingOf(const std::string& address) const {
  if (vouched_.contains(address)) return PeerStanding::Vouched;
  if (probes_ && probes_->MayHearFrom(address)) return PeerStanding::Open;
  return exposed_.contains(address) ? PeerStanding::Exposed : PeerStanding::Clear;
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
    verdict->second =
        NetworkManagerCallsVPN(network_ ? AddressesOf(*network_, link.name) : std::vector<std::string>());
  }
  return verdict->second;
}

}  // namespace Wayfinding

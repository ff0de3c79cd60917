#include "libs/Wayfinder/Deciding/LocationRound.h"

#include "libs/Wayfinder/Network/LinkKind.h"
#include "libs/Wayfinder/Network/NetworkManagerQuery.h"

#include <algorithm>
#include <unordered_map>
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

bool IsUsable(const std::optional<NetworkState>& network) {
  return !network || network->IsUsable();
}

}  // namespace

// Fills a round's beacons and stores.
class LocationRound::Planner {
 public:
  explicit Planner(LocationRound& round) : round_(round) {}

  // Internal and external beacons in turns, so that a store with many of one kind has the other asked, too.
  void Add(const StoreBeacons& named) {
    round_.stores_.push_back({.url = named.url});
    const std::size_t levels = std::max(named.internal.size(), named.external.size());
    for (std::size_t level = 0; level < levels; ++level) {
      if (level < named.internal.size()) AddMention(named.internal[level], true);
      if (level < named.external.size()) AddMention(named.external[level], false);
    }
  }

 private:
  void AddMention(const std::string& text, bool isInternal) {
    const auto [known, isNew] = texts_.try_emplace(text);
    if (isNew) known->second = PlaceOfAddress(text);
    Store& store = round_.stores_.back();
    (isInternal ? store.internal : store.external).push_back(known->second);
    round_.beacons_[known->second].owners.push_back(
        {.store = round_.stores_.size() - 1, .isInternal = isInternal});
  }

  std::size_t PlaceOfAddress(const std::string& text) {
    const BeaconAddress address = ParseBeaconAddress(text).value_or(BeaconAddress());
    const auto [place, isNew] = places_.try_emplace(address.Key(), round_.beacons_.size());
    if (isNew) round_.beacons_.push_back({.address = address, .text = text, .owners = {}, .outcome = {}});
    return place->second;
  }

  LocationRound& round_;
  // Stores of one company name the same beacons, and to read an address takes long.
  std::unordered_map<std::string, std::size_t> texts_;
  std::map<std::string, std::size_t> places_;
};

LocationRound::LocationRound(std::optional<NetworkState> network, HostLookups& lookups, Decided decided)
    : network_(std::move(network)), lookups_(lookups), decided_(std::move(decided)) {}

void LocationRound::TakeList(const std::vector<StoreBeacons>& stores, std::uint64_t number) {
  probes_.reset();
  toDecide_.clear();
  std::map<std::string, std::optional<ProbeOutcome>> heard;
  for (Beacon& beacon : std::exchange(beacons_, {}))
    heard.emplace(beacon.address.Key(), std::move(beacon.outcome));
  std::map<std::string, Store> before;
  for (Store& store : std::exchange(stores_, {})) before.emplace(store.url, std::move(store));
  Planner planner(*this);
  for (const StoreBeacons& store : stores) planner.Add(store);
  for (Beacon& beacon : beacons_) {
    const auto own = heard.find(beacon.address.Key());
    if (own != heard.end()) beacon.outcome = std::move(own->second);
  }
  for (std::size_t i = 0; i < stores.size(); ++i) {
    if (stores[i].since > number || !HasHeardAll(stores_[i])) continue;
    const Store& own = before.at(stores[i].url);
    stores_[i].wasAsked = own.wasAsked;
    stores_[i].leans = own.leans;
    stores_[i].location = own.location;
  }
}

bool LocationRound::HasHeardAll(const Store& store) const {
  const auto heard = [this](std::size_t beacon) { return beacons_[beacon].outcome.has_value(); };
  return std::all_of(store.internal.begin(), store.internal.end(), heard) &&
         std::all_of(store.external.begin(), store.external.end(), heard);
}

bool LocationRound::HasOpenStores() const {
  return std::any_of(stores_.begin(), stores_.end(),
                     [](const Store& store) { return store.leans || !store.location; });
}

void LocationRound::Repeat() {
  for (Store& store : stores_) {
    if (store.wasAsked && !store.HasAnswer()) store.location.reset();
  }
  Ask();
}

void LocationRound::Ask() {
  exposed_.clear();
  vouched_.clear();
  standingsChanged_ = true;  // also where those are gone that gave a standing
  tunnels_.clear();
  verdicts_.clear();
  std::vector<std::string> urls;
  for (Store& store : stores_) {
    urls.push_back(store.url);
    if (store.location) continue;
    store.openInternal = store.internal.size();
    store.openExternal = store.external.size();
    store.wasAsked = store.leans = false;
  }
  probes_.emplace(ChooseQuestions(), std::move(urls), lookups_,
                  [this](std::size_t question, ProbeOutcome outcome) {
                    Settle(beacons_[asked_[question]], std::move(outcome));
                  });
}

std::vector<ProbeRound::Question> LocationRound::ChooseQuestions() {
  std::vector<ProbeRound::Question> questions;
  asked_.clear();
  for (std::size_t i = 0; i < beacons_.size(); ++i) {
    Beacon& beacon = beacons_[i];
    std::vector<std::size_t> owners = UndecidedOwners(beacon);
    if (owners.empty()) {
      TakeStanding(beacon);
    } else if (std::string reason = WhyNotAsked(beacon); !reason.empty()) {
      Settle(beacon, {.reason = std::move(reason)});
    } else {
      beacon.outcome.reset();
      for (const std::size_t owner : owners) stores_[owner].wasAsked = true;
      asked_.push_back(i);
      questions.push_back({.beacon = beacon.address, .stores = std::move(owners)});
    }
  }
  return questions;
}

std::vector<std::size_t> LocationRound::UndecidedOwners(const Beacon& beacon) const {
  std::vector<std::size_t> owners;
  for (const Owner& owner : beacon.owners) {
    if (stores_[owner.store].location || (!owners.empty() && owners.back() == owner.store)) continue;
    owners.push_back(owner.store);
  }
  return owners;
}

std::string LocationRound::WhyNotAsked(const Beacon& beacon) const {
  if (beacon.address.urls.empty()) return beacon.text + ": no address";
  return IsUsable(network_) || beacon.address.isLoopback ? std::string() : beacon.text + ": not asked";
}

void LocationRound::Advance() {
  probes_->Advance();
  DecideStores();
  if (probes_->IsFinished()) probes_.reset();
}

void LocationRound::CutOff() {
  probes_.reset();
  for (Beacon& beacon : beacons_) {
    if (!beacon.outcome) Settle(beacon, {.reason = beacon.text + ": no answer in time"});
  }
  DecideStores();
}

// A decision is tried when it may have become possible, and not for each of thousands of beacons.
void LocationRound::Settle(Beacon& beacon, ProbeOutcome outcome) {
  beacon.outcome = std::move(outcome);
  TakeStanding(beacon);
  const bool isPlain = beacon.outcome->answer == ProbeAnswer::Answered && !beacon.outcome->proven;
  for (const Owner& owner : beacon.owners) {
    Store& store = stores_[owner.store];
    if (isPlain && owner.isInternal) store.leans = true;
    if (store.location) continue;
    --(owner.isInternal ? store.openInternal : store.openExternal);
    if (store.openInternal == 0 && (owner.isInternal || store.openExternal == 0))
      toDecide_.insert(owner.store);
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
      if (stores_[i].leans && stores_[i].location) toDecide_.insert(i);
    }
  }
  for (const std::size_t store : std::exchange(toDecide_, {})) Decide(store);
}

void LocationRound::Decide(std::size_t place) {
  Store& store = stores_[place];
  const std::optional<LocationDecision> decision = DecideLocation(
      {.internal = OutcomesOf(store.internal),
       .external = OutcomesOf(store.external),
       .networkIsUsable = IsUsable(network_)},
      [this](const std::string& address) { return StandingOf(address); },
      [this](const std::string& address) { return TunnelTo(address); });
  if (!decision) {
    if (store.leans) toDecide_.insert(place);  // what it waits for need not be its own beacon
    return;
  }
  if (store.location == decision->location) return;
  store.location = decision->location;
  decided_(place, *decision);
}

std::vector<const ProbeOutcome*> LocationRound::OutcomesOf(const std::vector<std::size_t>& beacons) const {
  std::vector<const ProbeOutcome*> outcomes;
  outcomes.reserve(beacons.size());
  for (const std::size_t beacon : beacons) {
    const std::optional<ProbeOutcome>& outcome = beacons_[beacon].outcome;
    outcomes.push_back(outcome ? &*outcome : nullptr);
  }
  return outcomes;
}

// Behind a portal the beacons themselves are still silent, whatever it says in their names.
bool LocationRound::Store::HasAnswer() const {
  return location && *location != NetworkLocation::None && *location != NetworkLocation::Hotspot;
}

std::set<std::size_t> LocationRound::Unanswered() const {
  std::set<std::size_t> unanswered;
  for (std::size_t i = 0; i < stores_.size(); ++i) {
    if (stores_[i].wasAsked && !stores_[i].HasAnswer()) unanswered.insert(i);
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

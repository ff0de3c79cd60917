#include "libs/Wayfinder/Deciding/RoundPlan.h"

#include <algorithm>
#include <map>
#include <unordered_map>

namespace Wayfinding {
namespace {

class Planner {
 public:
  explicit Planner(RoundPlan& plan) : plan_(plan) {}

  std::size_t PlaceOf(const std::string& text) {
    const auto [known, isNew] = texts_.try_emplace(text);
    if (isNew) known->second = PlaceOfAddress(text);
    return known->second;
  }

 private:
  std::size_t PlaceOfAddress(const std::string& text) {
    std::optional<BeaconAddress> address = ParseBeaconAddress(text);
    const std::string key = address ? address->Key() : std::string();
    const auto [place, isNew] = places_.try_emplace(key, plan_.beacons.size());
    if (isNew) {
      plan_.beacons.push_back(
          {.address = address ? std::move(*address) : BeaconAddress(), .text = text, .owners = {}});
    }
    return place->second;
  }

  RoundPlan& plan_;
  // Stores of one company name the same beacons, and to read an address takes long.
  std::unordered_map<std::string, std::size_t> texts_;
  std::map<std::string, std::size_t> places_;
};

std::size_t LongestList(const std::vector<StoreBeacons>& stores) {
  std::size_t longest = 0;
  for (const StoreBeacons& store : stores)
    longest = std::max({longest, store.internal.size(), store.external.size()});
  return longest;
}

// Appends the places of each store's beacon of one level to that store's list.
void PlanLevel(const std::vector<StoreBeacons>& stores, std::size_t level, Planner& planner,
               RoundPlan& plan) {
  for (std::size_t i = 0; i < stores.size(); ++i) {
    if (level < stores[i].internal.size())
      plan.stores[i].internal.push_back(planner.PlaceOf(stores[i].internal[level]));
  }
  for (std::size_t i = 0; i < stores.size(); ++i) {
    if (level < stores[i].external.size())
      plan.stores[i].external.push_back(planner.PlaceOf(stores[i].external[level]));
  }
}

RoundPlan::Owner& OwnerOf(RoundPlan::Beacon& beacon, std::size_t store) {
  if (beacon.owners.empty() || beacon.owners.back().store != store) beacon.owners.push_back({.store = store});
  return beacon.owners.back();
}

void NoteOwners(RoundPlan& plan) {
  for (std::size_t i = 0; i < plan.stores.size(); ++i) {
    for (const std::size_t place : plan.stores[i].internal) ++OwnerOf(plan.beacons[place], i).asInternal;
    for (const std::size_t place : plan.stores[i].external) ++OwnerOf(plan.beacons[place], i).asExternal;
  }
}

}  // namespace

RoundPlan PlanRound(const std::vector<StoreBeacons>& stores) {
  RoundPlan plan;
  plan.stores.resize(stores.size());
  Planner planner(plan);
  const std::size_t levels = LongestList(stores);
  for (std::size_t level = 0; level < levels; ++level) PlanLevel(stores, level, planner, plan);
  NoteOwners(plan);
  return plan;
}

}  // namespace Wayfinding

#pragma once

#include "libs/Wayfinder/Probing/BeaconAddress.h"
#include "libs/Wayfinder/StoreBeacons.h"

#include <cstddef>
#include <string>
#include <vector>

namespace Wayfinding {

// Which beacons a round asks, and whose they are.
struct RoundPlan {
  // A store's beacons as places in `beacons`.
  struct Store {
    std::vector<std::size_t> internal;
    std::vector<std::size_t> external;
  };
  // How often a store names a beacon.
  struct Owner {
    std::size_t store = 0;  // place in `stores`
    std::size_t asInternal = 0;
    std::size_t asExternal = 0;
  };
  struct Beacon {
    BeaconAddress address;      // without URLs: nothing that could be asked
    std::string text;           // as the first store that names it spells it
    std::vector<Owner> owners;  // each store once
  };

  std::vector<Beacon> beacons;  // each once, however many stores name it
  std::vector<Store> stores;
};

// The plan's beacons are in a fair order: the first internal beacon of every store, the first external one of
// every store, the second internal ones and so on. Any thread.
[[nodiscard]] RoundPlan PlanRound(const std::vector<StoreBeacons>& stores);

}  // namespace Wayfinding

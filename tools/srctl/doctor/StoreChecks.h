#pragma once

#include "bus/StoreInfo.h"
#include "doctor/Finding.h"

#include <future>
#include <optional>

// The checks of `srctl doctor` that look at one store and its servers.
namespace Srctl::StoreChecks {

struct Situation {
  StoreInfo store;
  // As the agent tells it, if it does; none of a store that is not in its list.
  std::shared_future<std::optional<LocationInfo>> location;
};

// Reports the server, each server at which there are gateways, the discovery document, and the location.
// Blocks for the network, and for the location once it depends on that. Changes the current directory, as
// documentcheck does. Any thread, several at once.
void CheckStore(const Situation& situation, const FindingReport& report);

}  // namespace Srctl::StoreChecks

#pragma once

#include "bus/StoreInfo.h"
#include "doctor/Finding.h"

#include <optional>

// The checks of `srctl doctor` that look at one store and its servers.
namespace Srctl::StoreChecks {

struct Situation {
  StoreInfo store;
  std::optional<LocationInfo> location;  // as the agent tells it; nothing of a store that is not in its list
};

// Reports the server, each server at which there are gateways, the discovery document, and the location.
// Blocks for the network. Changes the current directory, as documentcheck does. Any thread, several at once.
void CheckStore(const Situation& situation, const FindingReport& report);

}  // namespace Srctl::StoreChecks

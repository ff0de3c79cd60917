#pragma once

#include "bus/StoreInfo.h"
#include "doctor/Finding.h"

// The checks of `srctl doctor` that look at one store and its servers.
namespace Srctl::StoreChecks {

struct Situation {
  StoreInfo store;
  LocationInfo location;  // as the agent tells it
};

// Reports the server, the gateway where the store is reached through one, the discovery document, and the
// location. Blocks for the network. Changes the current directory, as documentcheck does.
void CheckStore(const Situation& situation, const FindingReport& report);

}  // namespace Srctl::StoreChecks

#pragma once

#include "bus/StoreInfo.h"
#include "doctor/Finding.h"

#include <cstdint>
#include <string>

// The checks of `srctl doctor` that look at one store and its servers.
namespace storechecks {

struct Situation {
  StoreInfo store;
  std::uint64_t location = 0;  // as the agent decided it
  std::string reason;          // why, as the library gives it in this process; empty when it does not
};

// Reports the server, the gateway where the store is reached through one, the discovery document, and the
// location. Blocks for the network. Changes the current directory, as documentcheck does.
void CheckStore(const Situation& situation, const FindingReport& report);

}  // namespace storechecks

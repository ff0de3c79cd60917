#pragma once

#include "libs/Wording/Message.h"

#include <cstdint>
#include <string>
#include <vector>

namespace Srctl {

// Stores and gateways as the agent describes them on the bus. All text is UTF-8 and comes from documents, so
// it may hold any character.
struct GatewayInfo {
  std::string name;
  std::string url;
  bool isDefault = false;
};

struct StoreInfo {
  std::string id;
  std::string name;
  std::string url;
  std::uint64_t type = 0;
  std::vector<GatewayInfo> gateways;
};

// Where the machine stands relative to a store, as Wayfinder numbers it, and why.
struct LocationInfo {
  std::uint64_t value = 0;
  Wording::Message reason;
};

// The gateway through which a store is reached at present.
struct CurrentGatewayInfo {
  std::string name;
  std::string url;
  std::uint64_t authentication = 0;
  std::uint64_t edition = 0;
};

}  // namespace Srctl

#pragma once

#include <cstdint>
#include <string>
#include <vector>

// A store as the agent describes it on the bus. All text is UTF-8 and comes from documents, so it may hold
// any character.
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

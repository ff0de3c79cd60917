#pragma once

#include <string>
#include <vector>

namespace TestSupport {

struct GatewayText {
  std::string name;
  std::string location;
  bool isDefault = false;
};

struct StoreText {
  std::string id;
  std::string name;
  std::string url;
  std::vector<GatewayText> gateways;
  std::vector<std::string> internalBeacons;
  std::vector<std::string> externalBeacons;
};

// A valid service-record document with these stores.
[[nodiscard]] std::string ServiceRecordDocument(const std::vector<StoreText>& stores);
// A valid discovery document with these stores.
[[nodiscard]] std::string DiscoveryDocument(const std::vector<StoreText>& stores);

}  // namespace TestSupport

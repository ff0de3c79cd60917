#pragma once

#include "libs/PropertyList/PropertyList.h"

#include <cstdint>
#include <optional>
#include <string>
#include <tuple>

// What the beacon service answers. Text is UTF-8, in dictionaries as the bus carries it. Called on the main
// thread; no call waits for the network or for a change of the list.
class MrvBeaconSvr {
 public:
  // The network location value relative to the store at this URL; passed on as it is, without checks.
  [[nodiscard]] std::uint64_t checkLocationForStore(const std::string& storeURL);

  // The same value, and why it is this one: a line that the bus carries, empty while it is being decided.
  [[nodiscard]] std::tuple<std::uint64_t, std::string> explainLocationForStore(const std::string& storeURL);

  // The same value, and why as a message, for whoever shows it in another language.
  [[nodiscard]] std::tuple<std::uint64_t, PropertyList::Dictionary> describeLocationForStore(
      const std::string& storeURL);

  // GatewayURL, GatewayName, GatewayAuthType, GatewayEdition of the default gateway of the store that the URL
  // points at; nothing for an empty URL, an unknown store or a store without gateways.
  [[nodiscard]] std::optional<PropertyList::Dictionary> getCurrentGatewayForStore(
      const std::string& storeURL);

  [[nodiscard]] std::uint32_t networkReachabilityFlags();
};

// A new object, owned by the caller.
extern "C" [[nodiscard]] MrvBeaconSvr* NewMrvBeaconService();

#pragma once

#include "SRLib/SRStore.h"
#include "libs/PropertyList/PropertyList.h"
#include "libs/Text/TextHelpers.h"

#include <string>
#include <string_view>

namespace Agent {

// Stores as plain dictionaries, the form in which they leave the core.

// Makes UTF-8 of the core's text.
using TextForm = std::string (*)(std::wstring_view text);

// GatewayName, GatewayURL, IsDefault.
[[nodiscard]] PropertyList::Dictionary GatewayDictionary(const std::wstring& name, const std::wstring& url,
                                                         bool isDefault, TextForm form = util::narrow);

enum class BeaconKeys { Omitted, Included };

// StoreName, StoreURL, StoreType, StoreID, then each list that is not empty: StoreInternalBeacons and
// StoreExternalBeacons where they are included, StoreGateways. The store's lists are taken as they are.
[[nodiscard]] PropertyList::Dictionary StoreDictionary(const ServiceRecords::SRStore& store,
                                                       BeaconKeys beacons, TextForm form = util::narrow);

}  // namespace Agent

#pragma once

#include "SRLib/PropertyList/PropertyList.h"
#include "SRLib/SRStore.h"

#include <string>

// Stores as plain dictionaries, the form in which they leave the core. Text is UTF-8.

// GatewayName, GatewayURL, IsDefault.
[[nodiscard]] PropertyList::Dictionary GatewayDictionary(const std::wstring& name, const std::wstring& url,
                                                         bool isDefault);

enum class BeaconKeys { Omitted, Included };

// StoreName, StoreURL, StoreType, StoreID, then each list that is not empty: StoreInternalBeacons and
// StoreExternalBeacons where they are included, StoreGateways. The store's lists are taken as they are.
[[nodiscard]] PropertyList::Dictionary StoreDictionary(const ServiceRecords::SRStore& store,
                                                       BeaconKeys beacons);

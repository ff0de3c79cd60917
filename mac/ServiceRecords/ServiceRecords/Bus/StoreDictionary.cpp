#include "Bus/StoreDictionary.h"

namespace Agent {

using ServiceRecords::BeaconType;
using ServiceRecords::SRBeacon;
using ServiceRecords::SRGateway;
using ServiceRecords::SRStore;

namespace {

using Entries = std::vector<PropertyList::Entry>;

void AddBeacons(Entries& entries, const char* key, const std::list<SRBeacon>& beacons, TextForm form) {
  if (beacons.empty()) return;
  PropertyList::Array array;
  array.reserve(beacons.size());
  for (const SRBeacon& beacon : beacons) {
    array.emplace_back(PropertyList::Dictionary{{"BeaconLocation", form(beacon.GetLocation())},
                                                {"BeaconDSConfirmed", beacon.GetDSConfirmed()}});
  }
  entries.push_back({key, std::move(array)});
}

void AddGateways(Entries& entries, const std::list<SRGateway>& gateways, TextForm form) {
  if (gateways.empty()) return;
  PropertyList::Array array;
  array.reserve(gateways.size());
  for (const SRGateway& gateway : gateways) {
    array.emplace_back(
        GatewayDictionary(gateway.GetName(), gateway.GetLocation(), gateway.GetDefault(), form));
  }
  entries.push_back({"StoreGateways", std::move(array)});
}

}  // namespace

PropertyList::Dictionary GatewayDictionary(const std::wstring& name, const std::wstring& url, bool isDefault,
                                           TextForm form) {
  return {{"GatewayName", form(name)}, {"GatewayURL", form(url)}, {"IsDefault", isDefault}};
}

PropertyList::Dictionary StoreDictionary(const SRStore& store, BeaconKeys beacons, TextForm form) {
  Entries entries{{"StoreName", form(store.GetStoreName())},
                  {"StoreURL", form(store.GetStoreURL())},
                  {"StoreType", static_cast<std::uint32_t>(store.GetSRType())},
                  {"StoreID", form(store.GetStoreID())}};
  if (beacons == BeaconKeys::Included) {
    AddBeacons(entries, "StoreInternalBeacons", store.Beacons(BeaconType::Internal), form);
    AddBeacons(entries, "StoreExternalBeacons", store.Beacons(BeaconType::External), form);
  }
  AddGateways(entries, store.GetGateways(), form);
  return PropertyList::Dictionary(std::move(entries));
}

}  // namespace Agent

#include "Bus/StoreDictionary.h"

namespace Agent {

using ServiceRecords::BeaconType;
using ServiceRecords::SRBeacon;
using ServiceRecords::SRGateway;
using ServiceRecords::SRStore;

namespace {

void AddBeacons(PropertyList::Dictionary& dictionary, const char* key, const std::list<SRBeacon>& beacons,
                TextForm form) {
  if (beacons.empty()) return;
  PropertyList::Array array;
  for (const SRBeacon& beacon : beacons) {
    array.emplace_back(PropertyList::Dictionary{{"BeaconLocation", form(beacon.GetLocation())},
                                                {"BeaconDSConfirmed", beacon.GetDSConfirmed()}});
  }
  dictionary.Set(key, std::move(array));
}

void AddGateways(PropertyList::Dictionary& dictionary, const std::list<SRGateway>& gateways, TextForm form) {
  if (gateways.empty()) return;
  PropertyList::Array array;
  for (const SRGateway& gateway : gateways) {
    array.emplace_back(
        GatewayDictionary(gateway.GetName(), gateway.GetLocation(), gateway.GetDefault(), form));
  }
  dictionary.Set("StoreGateways", std::move(array));
}

}  // namespace

PropertyList::Dictionary GatewayDictionary(const std::wstring& name, const std::wstring& url, bool isDefault,
                                           TextForm form) {
  return {{"GatewayName", form(name)}, {"GatewayURL", form(url)}, {"IsDefault", isDefault}};
}

PropertyList::Dictionary StoreDictionary(const SRStore& store, BeaconKeys beacons, TextForm form) {
  PropertyList::Dictionary dictionary{{"StoreName", form(store.GetStoreName())},
                                      {"StoreURL", form(store.GetStoreURL())},
                                      {"StoreType", static_cast<std::uint32_t>(store.GetSRType())},
                                      {"StoreID", form(store.GetStoreID())}};
  if (beacons == BeaconKeys::Included) {
    AddBeacons(dictionary, "StoreInternalBeacons", store.Beacons(BeaconType::Internal), form);
    AddBeacons(dictionary, "StoreExternalBeacons", store.Beacons(BeaconType::External), form);
  }
  AddGateways(dictionary, store.GetGateways(), form);
  return dictionary;
}

}  // namespace Agent

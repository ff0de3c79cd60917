#include "StoreDictionary.h"

#include "SRLib/TextHelpers.h"

using ServiceRecords::BeaconType;
using ServiceRecords::SRBeacon;
using ServiceRecords::SRGateway;
using ServiceRecords::SRStore;

namespace {

void AddBeacons(PropertyList::Dictionary& dictionary, const char* key, const std::list<SRBeacon>& beacons) {
  if (beacons.empty()) return;
  PropertyList::Array array;
  for (const SRBeacon& beacon : beacons) {
    array.emplace_back(PropertyList::Dictionary{{"BeaconLocation", util::narrow(beacon.GetLocation())},
                                                {"BeaconDSConfirmed", beacon.GetDSConfirmed()}});
  }
  dictionary.Set(key, std::move(array));
}

void AddGateways(PropertyList::Dictionary& dictionary, const std::list<SRGateway>& gateways) {
  if (gateways.empty()) return;
  PropertyList::Array array;
  for (const SRGateway& gateway : gateways) {
    array.emplace_back(GatewayDictionary(gateway.GetName(), gateway.GetLocation(), gateway.GetDefault()));
  }
  dictionary.Set("StoreGateways", std::move(array));
}

}  // namespace

PropertyList::Dictionary GatewayDictionary(const std::wstring& name, const std::wstring& url,
                                           bool isDefault) {
  return {{"GatewayName", util::narrow(name)}, {"GatewayURL", util::narrow(url)}, {"IsDefault", isDefault}};
}

PropertyList::Dictionary StoreDictionary(const SRStore& store, BeaconKeys beacons) {
  PropertyList::Dictionary dictionary{{"StoreName", util::narrow(store.GetStoreName())},
                                      {"StoreURL", util::narrow(store.GetStoreURL())},
                                      {"StoreType", static_cast<std::uint32_t>(store.GetSRType())},
                                      {"StoreID", util::narrow(store.GetStoreID())}};
  if (beacons == BeaconKeys::Included) {
    AddBeacons(dictionary, "StoreInternalBeacons", store.Beacons(BeaconType::Internal));
    AddBeacons(dictionary, "StoreExternalBeacons", store.Beacons(BeaconType::External));
  }
  AddGateways(dictionary, store.GetGateways());
  return dictionary;
}

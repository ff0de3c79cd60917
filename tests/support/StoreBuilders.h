#pragma once

#include "SRLib/SRStore.h"

#include <list>
#include <string>
#include <vector>

namespace TestSupport {

inline ServiceRecords::SRGateway Gateway(const std::wstring& name, const std::wstring& location = L"",
                                         bool isDefault = false) {
  ServiceRecords::SRGateway gateway;
  gateway.SetName(name);
  gateway.SetLocation(location);
  gateway.SetDefault(isDefault);
  return gateway;
}

inline ServiceRecords::SRBeacon Beacon(const std::wstring& location, bool confirmed = false) {
  ServiceRecords::SRBeacon beacon;
  beacon.SetLocation(location);
  beacon.SetDSConfirmed(confirmed);
  return beacon;
}

inline ServiceRecords::SRStore Store(const std::wstring& id, const std::wstring& url,
                                     const std::list<ServiceRecords::SRGateway>& gateways = {}) {
  ServiceRecords::SRStore store;
  store.SetStoreID(id);
  store.SetStoreURL(url);
  store.SetStoreName(L"Name of " + id);
  store.GetGateways() = gateways;
  return store;
}

inline ServiceRecords::StoreMap Map(const std::vector<ServiceRecords::SRStore>& stores) {
  ServiceRecords::StoreMap map;
  for (const auto& store : stores) map[store.GetStoreID()] = store;
  return map;
}

inline std::vector<std::wstring> Names(const std::list<ServiceRecords::SRGateway>& gateways) {
  std::vector<std::wstring> names;
  for (const auto& gateway : gateways) names.push_back(gateway.GetName());
  return names;
}

inline std::vector<std::wstring> Locations(const std::list<ServiceRecords::SRBeacon>& beacons) {
  std::vector<std::wstring> locations;
  for (const auto& beacon : beacons) locations.push_back(beacon.GetLocation());
  return locations;
}

inline std::vector<std::wstring> Ids(const ServiceRecords::StoreMap& stores) {
  std::vector<std::wstring> ids;
  for (const auto& [id, store] : stores) ids.push_back(id);
  return ids;
}

// The names of the gateways that carry the default mark.
inline std::vector<std::wstring> Marked(const std::list<ServiceRecords::SRGateway>& gateways) {
  std::vector<std::wstring> names;
  for (const auto& gateway : gateways) {
    if (gateway.GetDefault()) names.push_back(gateway.GetName());
  }
  return names;
}

}  // namespace TestSupport

#include "common/GeneratedStores.h"

#include "libs/PropertyList/PropertyList.h"
#include "libs/Text/TextHelpers.h"

#include <algorithm>
#include <iterator>

namespace Bench {
namespace {

using PropertyList::Dictionary;
using ServiceRecords::BeaconType;
using ServiceRecords::SRBeacon;
using ServiceRecords::SRGateway;
using ServiceRecords::SRStore;

std::string Padded(std::size_t number) {
  const std::string digits = std::to_string(number);
  return std::string(5 - std::min<std::size_t>(digits.size(), 5), '0') + digits;
}

std::vector<std::string> Beacons(const StoreShape& shape, const std::string& side) {
  std::vector<std::string> beacons;
  for (std::size_t i = 0; i < shape.beacons; ++i) {
    beacons.push_back(shape.beaconServer + "/" + side + "/" + std::to_string(i));
  }
  return beacons;
}

SRStore Record(const TestSupport::StoreText& text) {
  SRStore store;
  store.SetStoreID(util::widen(text.id));
  store.SetStoreName(util::widen(text.name));
  store.SetStoreURL(util::widen(text.url));
  for (const TestSupport::GatewayText& each : text.gateways) {
    SRGateway gateway;
    gateway.SetName(util::widen(each.name));
    gateway.SetLocation(util::widen(each.location));
    gateway.SetDefault(each.isDefault);
    store.AddGateway(gateway);
  }
  const auto addBeacons = [&store](const std::vector<std::string>& locations, BeaconType type) {
    for (const std::string& location : locations) {
      SRBeacon beacon;
      beacon.SetLocation(util::widen(location));
      store.AddBeacon(beacon, type);
    }
  };
  addBeacons(text.internalBeacons, BeaconType::Internal);
  addBeacons(text.externalBeacons, BeaconType::External);
  return store;
}

Dictionary SavedGateways(const SRStore& store) {
  std::vector<PropertyList::Entry> gateways;
  for (const SRGateway& gateway : store.GetGateways()) {
    gateways.push_back({util::narrow(gateway.GetName()),
                        Dictionary{{"LogonPoint", util::narrow(gateway.GetLocation())},
                                   {"Edition", static_cast<std::uint32_t>(gateway.GetEdition())},
                                   {"Auth", static_cast<std::uint32_t>(gateway.GetAuthentication())},
                                   {"AGMode", static_cast<std::uint32_t>(gateway.GetAGMode())},
                                   {"TrustedByUser", gateway.GetTrustedByUser()},
                                   {"TrustedByDS", gateway.GetTrustedByDS()},
                                   {"IsDefault", gateway.GetDefault()}}});
  }
  return Dictionary(std::move(gateways));
}

Dictionary SavedBeacons(const std::list<SRBeacon>& list) {
  std::vector<PropertyList::Entry> beacons;
  for (const SRBeacon& beacon : list) {
    beacons.push_back(
        {"Addr" + std::to_string(beacons.size()), Dictionary{{"Address", util::narrow(beacon.GetLocation())},
                                                             {"DSconfirmed", beacon.GetDSConfirmed()}}});
  }
  return Dictionary(std::move(beacons));
}

Dictionary SavedStore(const SRStore& store) {
  return {{"Name", util::narrow(store.GetStoreName())},
          {"Addr", util::narrow(store.GetStoreURL())},
          {"SRType", static_cast<std::uint32_t>(store.GetSRType())},
          {"Gateways", SavedGateways(store)},
          {"Beacons", Dictionary{{"Internal", SavedBeacons(store.Beacons(BeaconType::Internal))},
                                 {"External", SavedBeacons(store.Beacons(BeaconType::External))}}}};
}

}  // namespace

std::string StoreID(std::size_t number) {
  return "store-" + Padded(number);
}

std::string StoreURL(std::size_t number) {
  return "https://" + StoreID(number) + ".example/Example/Main/discovery";
}

TestSupport::StoreText StoreAsText(std::size_t number, const StoreShape& shape) {
  TestSupport::StoreText store{.id = StoreID(number),
                               .name = "Store " + Padded(number),
                               .url = StoreURL(number),
                               .gateways = {},
                               .internalBeacons = Beacons(shape, "inside"),
                               .externalBeacons = Beacons(shape, "outside")};
  for (std::size_t i = 0; i < shape.gateways; ++i) {
    const std::string gateway = std::to_string(i);
    store.gateways.push_back({.name = "Gateway " + gateway,
                              .location = "https://gateway-" + gateway + "." + StoreID(number) + ".example",
                              .isDefault = i + 1 == shape.gateways});
  }
  return store;
}

std::vector<TestSupport::StoreText> StoresAsText(std::size_t count, const StoreShape& shape) {
  std::vector<TestSupport::StoreText> stores;
  for (std::size_t i = 0; i < count; ++i) stores.push_back(StoreAsText(i, shape));
  return stores;
}

ServiceRecords::StoreMap Stores(std::size_t count, const StoreShape& shape) {
  ServiceRecords::StoreMap stores;
  for (std::size_t i = 0; i < count; ++i) {
    SRStore store = Record(StoreAsText(i, shape));
    stores.emplace_hint(stores.end(), store.GetStoreID(), std::move(store));
  }
  return stores;
}

std::string ListFile(const ServiceRecords::StoreMap& stores) {
  std::vector<PropertyList::Entry> saved;
  for (const auto& [id, store] : stores) saved.push_back({util::narrow(id), SavedStore(store)});
  const Dictionary tree{{"SR", Dictionary{{"Store", Dictionary(std::move(saved))}}}};
  return PropertyList::Write(tree);
}

}  // namespace Bench

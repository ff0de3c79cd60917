#include "SRLib/SRRegistryConfig.h"

#include "SRLib/Platform/Configurator.h"

#include <cstdint>
#include <memory>
#include <utility>

namespace ServiceRecords {
namespace {

constexpr wchar_t kStores[] = L"SR\\Store";
constexpr wchar_t kAddr[] = L"Addr";  // a store's address, and the prefix of beacon containers
constexpr wchar_t kName[] = L"Name";
constexpr wchar_t kType[] = L"SRType";
constexpr wchar_t kGateways[] = L"Gateways";
constexpr wchar_t kLogonPoint[] = L"LogonPoint";
constexpr wchar_t kEdition[] = L"Edition";
constexpr wchar_t kAuth[] = L"Auth";
constexpr wchar_t kAGMode[] = L"AGMode";
constexpr wchar_t kTrustedByUser[] = L"TrustedByUser";
constexpr wchar_t kTrustedByDS[] = L"TrustedByDS";
constexpr wchar_t kIsDefault[] = L"IsDefault";
constexpr wchar_t kBeacons[] = L"Beacons";
constexpr wchar_t kAddress[] = L"Address";
constexpr wchar_t kDSConfirmed[] = L"DSconfirmed";  // the file's own spelling

const wchar_t* ListName(BeaconType type) {
  return type == BeaconType::Internal ? L"Internal" : L"External";
}

// Reads single values whose absence means their default.
class Reader {
 public:
  explicit Reader(const Config::Configurator& configuration) : configuration_(configuration) {}

  [[nodiscard]] std::wstring String(const std::wstring& key) const {
    std::wstring value;
    configuration_.GetString(key, L"", value);
    return value;
  }
  [[nodiscard]] bool Boolean(const std::wstring& key) const {
    bool value = false;
    configuration_.GetBoolean(key, false, value);
    return value;
  }
  template <class Enumeration>
  [[nodiscard]] Enumeration Enumerated(const std::wstring& key) const {
    std::uint32_t value = 0;
    configuration_.GetUInt(key, 0, value);
    return static_cast<Enumeration>(value);
  }

 private:
  const Config::Configurator& configuration_;
};

}  // namespace

std::wstring SRRegistryConfig::NodeLiteral(const std::wstring& parent, const std::wstring& child) {
  return parent + L"\\" + child;
}

StoreMap SRRegistryConfig::RestoreStores() const {
  const std::unique_ptr<Config::Gathering> oneReading = configuration_.Gather();
  StoreMap stores;
  std::wstring id;
  for (std::uint32_t i = 0; configuration_.EnumContainers(kStores, i, id); ++i) {
    SRStore store;
    RestoreStore(id, store);
    stores[store.GetStoreID()] = std::move(store);
  }
  return stores;
}

void SRRegistryConfig::RestoreStore(const std::wstring& id, SRStore& store) const {
  const std::wstring storeKey = NodeLiteral(kStores, id);
  const Reader read(configuration_);
  store.SetStoreID(id);
  store.SetStoreURL(read.String(NodeLiteral(storeKey, kAddr)));
  store.SetStoreName(read.String(NodeLiteral(storeKey, kName)));
  store.SetSRType(read.Enumerated<SRType>(NodeLiteral(storeKey, kType)));
  RestoreGateways(storeKey, store);
  RestoreBeacons(storeKey, BeaconType::Internal, store);
  RestoreBeacons(storeKey, BeaconType::External, store);
}

void SRRegistryConfig::RestoreGateways(const std::wstring& storeKey, SRStore& store) const {
  const std::wstring gatewaysKey = NodeLiteral(storeKey, kGateways);
  const Reader read(configuration_);
  std::wstring name;
  for (std::uint32_t i = 0; configuration_.EnumContainers(gatewaysKey, i, name); ++i) {
    const std::wstring key = NodeLiteral(gatewaysKey, name);
    SRGateway gateway;
    gateway.SetName(name);
    gateway.SetLocation(read.String(NodeLiteral(key, kLogonPoint)));
    gateway.SetEdition(read.Enumerated<SRGateway::GatewayEdition>(NodeLiteral(key, kEdition)));
    // A missing value is RSA (0) here, not the None of a fresh gateway: deliberate.
    gateway.SetAuthentication(read.Enumerated<SRGateway::GatewayAuthentication>(NodeLiteral(key, kAuth)));
    gateway.SetAGMode(read.Enumerated<SRGateway::AGMode>(NodeLiteral(key, kAGMode)));
    gateway.SetTrustedByUser(read.Boolean(NodeLiteral(key, kTrustedByUser)));
    gateway.SetTrustedByDS(read.Boolean(NodeLiteral(key, kTrustedByDS)));
    gateway.SetDefault(read.Boolean(NodeLiteral(key, kIsDefault)));
    store.AddGateway(std::move(gateway));
  }
}

void SRRegistryConfig::RestoreBeacons(const std::wstring& storeKey, BeaconType type, SRStore& store) const {
  const std::wstring listKey = NodeLiteral(NodeLiteral(storeKey, kBeacons), ListName(type));
  const Reader read(configuration_);
  std::wstring name;
  for (std::uint32_t i = 0; configuration_.EnumContainers(listKey, i, name); ++i) {
    const std::wstring key = NodeLiteral(listKey, name);
    SRBeacon beacon;
    beacon.SetLocation(read.String(NodeLiteral(key, kAddress)));
    beacon.SetDSConfirmed(read.Boolean(NodeLiteral(key, kDSConfirmed)));
    store.AddBeacon(std::move(beacon), type);
  }
}

void SRRegistryConfig::SaveStores(StoreMap& stores) const {
  const std::unique_ptr<Config::Gathering> oneChange = configuration_.Gather();
  configuration_.DeleteContainer(kStores);
  for (auto& [id, store] : stores) SaveStore(store);
  oneChange->PutInPlace();
}

void SRRegistryConfig::SaveStores(const StoreMap& stores) const {
  StoreMap copy = stores;
  SaveStores(copy);
}

void SRRegistryConfig::SaveStore(SRStore& store) const {
  const std::wstring storeKey = NodeLiteral(kStores, store.GetStoreID());
  configuration_.CreateContainer(storeKey);
  configuration_.SetString(NodeLiteral(storeKey, kName), store.GetStoreName());
  configuration_.SetString(NodeLiteral(storeKey, kAddr), store.GetStoreURL());
  configuration_.SetUInt(NodeLiteral(storeKey, kType), static_cast<std::uint32_t>(store.GetSRType()));
  SaveGateways(storeKey, store.GetGateways());
  const std::wstring beaconsKey = NodeLiteral(storeKey, kBeacons);
  configuration_.CreateContainer(beaconsKey);
  SaveBeacons(beaconsKey, BeaconType::Internal, store.GetInternalBeacons());
  SaveBeacons(beaconsKey, BeaconType::External, store.GetExternalBeacons(configuration_));
}

void SRRegistryConfig::SaveGateways(const std::wstring& storeKey,
                                    const std::list<SRGateway>& gateways) const {
  const std::wstring gatewaysKey = NodeLiteral(storeKey, kGateways);
  configuration_.CreateContainer(gatewaysKey);
  for (const SRGateway& gateway : gateways) {
    const std::wstring key = NodeLiteral(gatewaysKey, gateway.GetName());
    configuration_.CreateContainer(key);
    configuration_.SetString(NodeLiteral(key, kLogonPoint), gateway.GetLocation());
    configuration_.SetUInt(NodeLiteral(key, kEdition), static_cast<std::uint32_t>(gateway.GetEdition()));
    configuration_.SetUInt(NodeLiteral(key, kAuth), static_cast<std::uint32_t>(gateway.GetAuthentication()));
    configuration_.SetUInt(NodeLiteral(key, kAGMode), static_cast<std::uint32_t>(gateway.GetAGMode()));
    configuration_.SetBoolean(NodeLiteral(key, kTrustedByUser), gateway.GetTrustedByUser());
    configuration_.SetBoolean(NodeLiteral(key, kTrustedByDS), gateway.GetTrustedByDS());
    configuration_.SetBoolean(NodeLiteral(key, kIsDefault), gateway.GetDefault());
  }
}

void SRRegistryConfig::SaveBeacons(const std::wstring& beaconsKey, BeaconType type,
                                   const std::list<SRBeacon>& beacons) const {
  const std::wstring listKey = NodeLiteral(beaconsKey, ListName(type));
  configuration_.CreateContainer(listKey);
  std::size_t position = 0;
  for (const SRBeacon& beacon : beacons) {
    const std::wstring key = NodeLiteral(listKey, kAddr + std::to_wstring(position++));
    configuration_.CreateContainer(key);
    configuration_.SetString(NodeLiteral(key, kAddress), beacon.GetLocation());
    configuration_.SetBoolean(NodeLiteral(key, kDSConfirmed), beacon.GetDSConfirmed());
  }
}

}  // namespace ServiceRecords

#pragma once

#include "SRLib/SRBeacon.h"
#include "SRLib/SRGateway.h"

#include <cstdint>
#include <list>
#include <map>
#include <string>
#include <utility>

namespace Config {
class Configurator;
}

namespace ServiceRecords {

// Kind of service record. The values are stored in the configuration and must not change.
enum class SRType : std::uint32_t { store = 0, unknown = 0xFFFFFFFF };

enum class BeaconType : std::uint32_t { Internal = 0, External = 1 };

// A provisioned application store: who it is, and how and from where it is reached. A plain value; the lists
// keep insertion order and may hold duplicates. Where the default gateway matters, `configuration` is the
// user's, in which the user may have chosen another one.
class SRStore {
 public:
  virtual ~SRStore() = default;
  SRStore() = default;
  SRStore(const SRStore&) = default;
  SRStore(SRStore&&) noexcept = default;
  SRStore& operator=(const SRStore&) = default;
  SRStore& operator=(SRStore&&) noexcept = default;

  [[nodiscard]] std::wstring GetStoreID() const { return storeID_; }
  void SetStoreID(std::wstring id) { storeID_ = std::move(id); }
  [[nodiscard]] std::wstring GetStoreURL() const { return storeURL_; }
  void SetStoreURL(std::wstring url) { storeURL_ = std::move(url); }
  [[nodiscard]] std::wstring GetStoreName() const { return storeName_; }
  void SetStoreName(std::wstring name) { storeName_ = std::move(name); }
  [[nodiscard]] SRType GetSRType() const { return type_; }
  void SetSRType(SRType type) { type_ = type; }

  [[nodiscard]] std::list<SRGateway>& GetGateways() { return gateways_; }
  [[nodiscard]] const std::list<SRGateway>& GetGateways() const { return gateways_; }
  // The store's own address stands in for a missing list of internal beacons, and stays in the store.
  [[nodiscard]] std::list<SRBeacon>& GetInternalBeacons();
  // The default gateway's address stands in for a missing list of external beacons, and stays in the store.
  [[nodiscard]] std::list<SRBeacon>& GetExternalBeacons(const Config::Configurator& configuration);
  // The list as it is, nothing added.
  [[nodiscard]] const std::list<SRBeacon>& Beacons(BeaconType type) const;

  // Every field, and every field of what the lists hold, in their order.
  [[nodiscard]] bool IsSameThroughout(const SRStore& other) const;

  void AddGateway(SRGateway gateway) { gateways_.push_back(std::move(gateway)); }
  void AddBeacon(SRBeacon beacon, BeaconType type);

  void SetAllGatewaysDSTrusted();
  void SetAllGatewaysUserTrusted();
  void SetAllBeaconsDSConfirmed();

  // Merges a newer record of the same store into this one; `dsTrusted` says that the discovery service
  // vouches for it. The default gateway in force before stays the default while a gateway of its name exists.
  void Merge(const SRStore& incoming, bool dsTrusted, const Config::Configurator& configuration);
  // The same but for the default mark, which stays as the newer record has it.
  void TakeOver(const SRStore& incoming, bool dsTrusted);
  void MergeGateways(const std::list<SRGateway>& incoming, bool dsTrusted,
                     const Config::Configurator& configuration);
  // What Merge of a document's record and the save behind it would make of this store: for the question
  // whether they may, so nothing is traced.
  [[nodiscard]] SRStore AfterReplacement(const SRStore& incoming,
                                         const Config::Configurator& configuration) const;
  void MergeBeacons(std::list<SRBeacon>& mine, const std::list<SRBeacon>& incoming, bool dsTrusted);

  // Copies out the gateway that the user chose in the configuration, else the one marked as default, else the
  // first. False, and `out` untouched, when the store has no gateways.
  bool GetDefaultGatewayRef(SRGateway& out, const Config::Configurator& configuration) const;
  // Moves the default mark to the named gateway. False, and nothing changed, when there is none of that name.
  bool SetDefaultGateway(const std::wstring& name);

 private:
  // Null for an empty name, and when there is none of that name.
  [[nodiscard]] const SRGateway* NamedGateway(const std::wstring& name) const;
  // There is a gateway.
  [[nodiscard]] const SRGateway& MarkedOrFirstGateway() const;
  [[nodiscard]] const SRGateway* GatewaySelectedByUser(const Config::Configurator& configuration) const;
  // `selected`: by the user; may be empty. Null when the store has no gateways.
  [[nodiscard]] const SRGateway* DefaultGateway(const std::wstring& selected) const;

  std::wstring storeID_;
  std::wstring storeURL_;
  std::wstring storeName_;
  SRType type_ = SRType::store;
  std::list<SRGateway> gateways_;
  std::list<SRBeacon> internalBeacons_;
  std::list<SRBeacon> externalBeacons_;
};

// Stores by their id, in plain code-point order.
using StoreMap = std::map<std::wstring, SRStore>;

}  // namespace ServiceRecords

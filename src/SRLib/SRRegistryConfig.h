#pragma once

#include "SRLib/SRStore.h"

#include <list>
#include <string>

namespace Config {
class Configurator;
}

namespace ServiceRecords {

// Saves the store list into the user's configuration and restores it. Light: make one for each use. No lock
// of its own; the caller holds the provider's for a whole save or restore. Failures to write are logged by
// the configuration; missing values restore as defaults.
class SRRegistryConfig {
 public:
  // The user's, which must outlive this.
  explicit SRRegistryConfig(const Config::Configurator& configuration) : configuration_(configuration) {}

  [[nodiscard]] StoreMap RestoreStores() const;
  void RestoreStore(const std::wstring& id, SRStore& store) const;
  void RestoreGateways(const std::wstring& storeKey, SRStore& store) const;
  void RestoreBeacons(const std::wstring& storeKey, BeaconType type, SRStore& store) const;

  // Replaces the saved set. A missing beacon list is filled before it is saved, so that the list holds what
  // the file does; a list that must not change is copied for that.
  void SaveStores(StoreMap& stores) const;
  void SaveStores(const StoreMap& stores) const;
  void SaveStore(SRStore& store) const;
  void SaveGateways(const std::wstring& storeKey, const std::list<SRGateway>& gateways) const;
  void SaveBeacons(const std::wstring& beaconsKey, BeaconType type, const std::list<SRBeacon>& beacons) const;

  // Parent, one backslash, child.
  [[nodiscard]] static std::wstring NodeLiteral(const std::wstring& parent, const std::wstring& child);

 private:
  const Config::Configurator& configuration_;
};

}  // namespace ServiceRecords

#pragma once

#include "SRLib/Platform/Configurator.h"
#include "SRLib/Repository/ConfigurationStorage.h"
#include "SRLib/Repository/TreeChange.h"

namespace Config {

// The configuration tree as a property list. Every operation sees what the storage holds by then, and every
// setter replaces it whole; between Gather and the end of its result, which belongs to the thread, all of
// them are one. A storage that cannot be read counts as empty and is not replaced; a setter's result does not
// tell that, Failures does. A key that a property list cannot hold names nothing.
class ConfigurationTree : public Configurator {
 public:
  // The storage outlives the tree. Trees of one storage are one.
  explicit ConfigurationTree(ConfigurationStorage& storage) : storage_(storage) {}

  bool GetUInt(const std::wstring& key, std::uint32_t fallback, std::uint32_t& value) const override;
  bool GetBoolean(const std::wstring& key, bool fallback, bool& value) const override;
  bool GetString(const std::wstring& key, const std::wstring& fallback, std::wstring& value) const override;
  bool GetBinary(const std::wstring& key, std::uint8_t* buffer, std::uint32_t& size) const override;
  bool GetList(const std::wstring& key, std::vector<std::wstring>& list) const override;
  bool SetList(const std::wstring& key, const std::vector<std::wstring>& list) const override;
  bool SetUInt(const std::wstring& key, std::uint32_t value) const override;
  bool SetBoolean(const std::wstring& key, bool value) const override;
  bool SetString(const std::wstring& key, const std::wstring& value) const override;
  bool CreateContainer(const std::wstring& key) const override;
  bool DeleteContainer(const std::wstring& key) const override;
  bool DeleteValue(const std::wstring& key) const override;
  bool EnumContainers(const std::wstring& key, std::uint32_t index, std::wstring& name) const override;
  bool EnumValues(const std::wstring& key, std::uint32_t index, std::wstring& name,
                  std::uint32_t& type) const override;
  std::uint32_t NotifyContainer(const std::wstring& key, bool recursive, std::uint32_t events,
                                ContainerCallback callback, void* context) const override;
  bool UnnotifyContainer(const std::uint32_t& handle) const override;

  [[nodiscard]] std::unique_ptr<Gathering> Gather() const override;
  [[nodiscard]] StorageFailures Failures() const override { return storage_.Failures(); }

 private:
  // Loads the tree; returns the container in which the last component of the raw key lies, null when there is
  // none, and that component.
  [[nodiscard]] ConfigurationStorage::Tree GetContainerAndKeyForRawKey(const std::wstring& rawKey,
                                                                       std::string& key) const;
  // What is stored under the key; null when nothing is, or something of another kind.
  [[nodiscard]] std::shared_ptr<const PropertyList::Value> Stored(const std::wstring& rawKey) const;
  template <class Kind>
  [[nodiscard]] std::shared_ptr<const Kind> StoredAs(const std::wstring& rawKey) const;

  [[nodiscard]] std::optional<KeyPath> PathOf(const std::wstring& rawKey) const;
  bool Store(const std::wstring& rawKey, PropertyList::Value value) const;
  void Change(TreeChange::Kind kind, const std::wstring& rawKey, PropertyList::Value value = {}) const;

  ConfigurationStorage& storage_;
};

}  // namespace Config

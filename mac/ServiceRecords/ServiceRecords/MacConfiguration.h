#pragma once

#include "SRLib/Platform/Configurator.h"

// The configuration tree of one scope, kept in one property-list file. Every operation sees what the file
// holds by then, and every setter writes it whole; between Gather and the end of its result, which belongs to
// the thread, all of them are one. A file that cannot be read counts as empty and is not written; a setter's
// result does not tell that, Failures does. A key that the file cannot hold names nothing.
class CMacConfiguration : public Config::Configurator {
 public:
  explicit CMacConfiguration(bool perUser) : perUser_(perUser) {}

  bool GetUInt(const std::wstring& key, std::uint32_t fallback, std::uint32_t& value) const override;
  bool GetBoolean(const std::wstring& key, bool fallback, bool& value) const override;
  bool GetString(const std::wstring& key, const std::wstring& fallback, std::wstring& value) const override;
  bool GetBinary(const std::wstring& key, std::uint8_t* buffer, std::uint32_t& size) const override;
  bool SetBinary(const std::wstring& key, const std::uint8_t* bytes, std::uint32_t size) const override;
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
                                Config::ContainerCallback callback, void* context) const override;
  bool UnnotifyContainer(const std::uint32_t& handle) const override;

  [[nodiscard]] std::unique_ptr<Config::Gathering> Gather() const override;

  // Those of the scope's file in this process.
  [[nodiscard]] Config::StorageFailures Failures() const override;

 private:
  const bool perUser_;
};

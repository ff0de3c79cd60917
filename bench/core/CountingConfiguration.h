#pragma once

#include "MacConfiguration.h"

#include <cstdint>

namespace Bench {

// The user's configuration as it is, and how often it is called.
class CountingConfiguration : public CMacConfiguration {
 public:
  CountingConfiguration() : CMacConfiguration(true) {}

  // The calls so far. One thread.
  [[nodiscard]] std::uint64_t Calls() const { return calls_; }

  bool GetUInt(const std::wstring& key, std::uint32_t fallback, std::uint32_t& value) const override;
  bool GetBoolean(const std::wstring& key, bool fallback, bool& value) const override;
  bool GetString(const std::wstring& key, const std::wstring& fallback, std::wstring& value) const override;
  bool SetUInt(const std::wstring& key, std::uint32_t value) const override;
  bool SetBoolean(const std::wstring& key, bool value) const override;
  bool SetString(const std::wstring& key, const std::wstring& value) const override;
  bool CreateContainer(const std::wstring& key) const override;
  bool DeleteContainer(const std::wstring& key) const override;
  bool EnumContainers(const std::wstring& key, std::uint32_t index, std::wstring& name) const override;

 private:
  mutable std::uint64_t calls_ = 0;
};

}  // namespace Bench

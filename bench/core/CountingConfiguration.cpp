#include "core/CountingConfiguration.h"

namespace Bench {

bool CountingConfiguration::GetUInt(const std::wstring& key, std::uint32_t fallback,
                                    std::uint32_t& value) const {
  ++calls_;
  return CMacConfiguration::GetUInt(key, fallback, value);
}

bool CountingConfiguration::GetBoolean(const std::wstring& key, bool fallback, bool& value) const {
  ++calls_;
  return CMacConfiguration::GetBoolean(key, fallback, value);
}

bool CountingConfiguration::GetString(const std::wstring& key, const std::wstring& fallback,
                                      std::wstring& value) const {
  ++calls_;
  return CMacConfiguration::GetString(key, fallback, value);
}

bool CountingConfiguration::SetUInt(const std::wstring& key, std::uint32_t value) const {
  ++calls_;
  return CMacConfiguration::SetUInt(key, value);
}

bool CountingConfiguration::SetBoolean(const std::wstring& key, bool value) const {
  ++calls_;
  return CMacConfiguration::SetBoolean(key, value);
}

bool CountingConfiguration::SetString(const std::wstring& key, const std::wstring& value) const {
  ++calls_;
  return CMacConfiguration::SetString(key, value);
}

bool CountingConfiguration::CreateContainer(const std::wstring& key) const {
  ++calls_;
  return CMacConfiguration::CreateContainer(key);
}

bool CountingConfiguration::DeleteContainer(const std::wstring& key) const {
  ++calls_;
  return CMacConfiguration::DeleteContainer(key);
}

bool CountingConfiguration::EnumContainers(const std::wstring& key, std::uint32_t index,
                                           std::wstring& name) const {
  ++calls_;
  return CMacConfiguration::EnumContainers(key, index, name);
}

}  // namespace Bench

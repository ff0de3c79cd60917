#pragma once

#include "SRLib/Repository/ConfigurationTree.h"
#include "fakes/MemoryStorage.h"

#include <string>
#include <vector>

namespace TestSupport {

// A configuration tree that is stored in memory. `beforeWrite` is called before each text is set, too.
class FakeConfigurator : private MemoryStorage, public Config::ConfigurationTree {
 public:
  FakeConfigurator() : ConfigurationTree(static_cast<MemoryStorage&>(*this)) {}

  using MemoryStorage::beforeRead;
  using MemoryStorage::beforeWrite;
  using MemoryStorage::Clear;
  using MemoryStorage::FailReads;
  using MemoryStorage::FailWrites;
  using MemoryStorage::Writes;
  // Every value as "path = value" and every container as "path\", in order, each list behind the last.
  [[nodiscard]] std::vector<std::wstring> Dump();

  bool SetString(const std::wstring& key, const std::wstring& value) const override;
  bool SetBinary(const std::wstring& key, const std::uint8_t* bytes, std::uint32_t size) const override;
  [[nodiscard]] Config::StorageFailures Failures() const override { return MemoryStorage::Failures(); }
};

}  // namespace TestSupport

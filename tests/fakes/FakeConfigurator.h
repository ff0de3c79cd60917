#pragma once

#include "SRLib/Platform/Configurator.h"

#include <functional>
#include <list>
#include <mutex>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace testsupport {

// A configuration tree in memory that enumerates in the order of insertion and counts its writes. Any thread.
class FakeConfigurator : public Config::Configurator {
 public:
  // Forgets the tree and the count.
  void Clear();
  // Called before each write, on the thread that writes.
  std::function<void()> beforeWrite;
  // Called before names are listed, on the thread that reads.
  std::function<void()> beforeRead;
  // How often the tree would have been written to its file.
  [[nodiscard]] int Writes() const;
  // From now on its file cannot be read, and so not written either, or cannot be written. Clear mends it.
  void FailReads(bool fail);
  void FailWrites(bool fail);
  // Every value as "path = value" and every container as "path\", in order, each list behind the last.
  [[nodiscard]] std::vector<std::wstring> Dump() const;

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
  [[nodiscard]] Config::StorageFailures Failures() const override;

 private:
  struct Node;
  using Container = std::list<std::pair<std::wstring, Node>>;
  using List = std::vector<std::wstring>;
  struct Node {
    std::variant<Container, std::uint32_t, bool, std::wstring, List> value;
  };

  static Node* Child(Container& container, const std::wstring& name);
  static void Describe(const Container& container, const std::wstring& path,
                       std::vector<std::wstring>& lines);
  // Null also when the file cannot be read.
  Node* Find(const std::wstring& key) const;
  // False when the file cannot be written.
  bool BeginWrite() const;
  bool Store(const std::wstring& key, Node node) const;

  mutable std::mutex mutex_;
  mutable Container root_;
  mutable int writes_ = 0;
  mutable Config::StorageFailures failures_;
  bool readsFail_ = false;
  bool writesFail_ = false;
};

}  // namespace testsupport

#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace Config {

// Called with the key of a changed container and the pointer given at registration.
using ContainerCallback = std::uint32_t (*)(const std::wstring& key, void* context);

// What went wrong with the storage behind a tree, since its beginning.
struct StorageFailures {
  std::uint64_t reads = 0;   // the tree counted as empty although it may not be
  std::uint64_t writes = 0;  // a change did not last
  std::string latest;        // the last of them, for a log: what failed and why, UTF-8
};

// The changes that one thread gathers to put them in place as one. Until then only that thread sees them;
// what was not put in place when this ends is dropped. Belongs to the thread that asked for it.
class Gathering {
 public:
  virtual ~Gathering() = default;
  // Makes the changes, in their order, to the tree as the storage holds it by then. As with a setter,
  // Failures tells when that did not last.
  virtual void PutInPlace() = 0;
};

// A tree of named containers and typed values, addressed by backslash-separated paths such as "SR\Store".
// Getters set their out value to the default first and tell whether a value was found. Any thread.
class Configurator {
 public:
  virtual ~Configurator() = default;

  virtual bool GetUInt(const std::wstring& key, std::uint32_t fallback, std::uint32_t& value) const = 0;
  virtual bool GetBoolean(const std::wstring& key, bool fallback, bool& value) const = 0;
  virtual bool GetString(const std::wstring& key, const std::wstring& fallback,
                         std::wstring& value) const = 0;
  virtual bool GetBinary(const std::wstring& key, std::uint8_t* buffer, std::uint32_t& size) const = 0;
  virtual bool SetBinary(const std::wstring& key, const std::uint8_t* bytes, std::uint32_t size) const = 0;
  virtual bool GetList(const std::wstring& key, std::vector<std::wstring>& list) const = 0;
  virtual bool SetList(const std::wstring& key, const std::vector<std::wstring>& list) const = 0;
  virtual bool SetUInt(const std::wstring& key, std::uint32_t value) const = 0;
  virtual bool SetBoolean(const std::wstring& key, bool value) const = 0;
  virtual bool SetString(const std::wstring& key, const std::wstring& value) const = 0;
  virtual bool CreateContainer(const std::wstring& key) const = 0;
  virtual bool DeleteContainer(const std::wstring& key) const = 0;
  virtual bool DeleteValue(const std::wstring& key) const = 0;
  virtual bool EnumContainers(const std::wstring& key, std::uint32_t index, std::wstring& name) const = 0;
  virtual bool EnumValues(const std::wstring& key, std::uint32_t index, std::wstring& name,
                          std::uint32_t& type) const = 0;
  virtual std::uint32_t NotifyContainer(const std::wstring& key, bool recursive, std::uint32_t events,
                                        ContainerCallback callback, void* context) const = 0;
  virtual bool UnnotifyContainer(const std::uint32_t& handle) const = 0;

  // From here to the end of the result, what this thread reads is the storage as it was at the first reading,
  // with what the thread has changed since. Within another one the result does nothing.
  [[nodiscard]] virtual std::unique_ptr<Gathering> Gather() const = 0;

  // What the results above do not tell.
  [[nodiscard]] virtual StorageFailures Failures() const = 0;
};

}  // namespace Config

#include "MacConfiguration.h"

#include "DbgTrace.h"
#include "PropertyListFile.h"
#include "SRLib/TextHelpers.h"
#include "StandardDirectories.h"

#include <pwd.h>
#include <unistd.h>

#include <limits>
#include <mutex>
#include <optional>
#include <string_view>
#include <vector>

namespace {

using PropertyList::Dictionary;
using PropertyList::Value;

// The tree most recently loaded, guarded by SyncLock. Never destroyed: a thread may still save while the
// process exits.
Dictionary& wholeFile = *new Dictionary;

void SyncLock(bool lock) {
  static std::mutex& mutex = *new std::mutex;
  if (lock) {
    mutex.lock();
  } else {
    mutex.unlock();
  }
}

class SyncGuard {
 public:
  SyncGuard() { SyncLock(true); }
  ~SyncGuard() { SyncLock(false); }
  SyncGuard(const SyncGuard&) = delete;
  SyncGuard& operator=(const SyncGuard&) = delete;
};

// "~" before an absolute path, expanded to the home folder that the user database gives.
std::filesystem::path UnderHome(const std::filesystem::path& path) {
  std::vector<char> buffer(16384);
  passwd entry{};
  passwd* user = nullptr;
  ::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &user);
  const std::filesystem::path home = user != nullptr ? user->pw_dir : "~";
  return home / path.relative_path();
}

struct PreferenceFiles {
  std::filesystem::path machine;
  std::filesystem::path user;
};

void CreateParent(const std::filesystem::path& file, mode_t mode, std::string_view failure) {
  const std::string folder = file.parent_path();
  const std::error_code error = StandardDirectories::CreateDirectories(folder, mode);
  if (!error) return;
  CSRLog(2, "%s - %@ doesn't exist or can't be created", "preferenceFile", folder);
  CSRLog(2, failure, "preferenceFile", error.message());
}

PreferenceFiles ComputePreferenceFiles() {
  const std::filesystem::path name = "Morvane/ServiceRecords.plist";
  PreferenceFiles files;
  files.machine = StandardDirectories::MachineApplicationSupport() / name;
  const auto userFolder = StandardDirectories::UserApplicationSupport();
  files.user = userFolder ? *userFolder / name : UnderHome(files.machine);
  CreateParent(files.machine, StandardDirectories::kSharedFolder,
               "%s - createDirectoryAtPath failed to create global preference directory - %@");
  CreateParent(files.user, StandardDirectories::kPrivateFolder,
               "%s - createDirectoryAtPath failed to create local preference directory - %@");
  PropertyListFile(files.machine).SweepTemporaries();
  PropertyListFile(files.user).SweepTemporaries();
  return files;
}

// One scope's file and what went wrong with it.
struct Storage {
  PropertyListFile file;
  Config::StorageFailures failures{};
};

// Both are guarded by SyncLock.
Storage& StorageOfScope(bool perUser) {
  static auto& user = *new Storage{PropertyListFile(preferenceFile(true))};
  static auto& machine = *new Storage{PropertyListFile(preferenceFile(false))};
  return perUser ? user : machine;
}

std::string Reason(const std::error_code& error) {
  if (error == std::errc::file_exists) return "the file is damaged, and there is no free name for its copy";
  return error.message();
}

void Count(std::uint64_t Config::StorageFailures::*kind, Storage& storage, const std::error_code& error) {
  ++(storage.failures.*kind);
  storage.failures.latest = storage.file.Path().string() + ": " + Reason(error);
}

Dictionary Load(bool perUser) {
  Storage& storage = StorageOfScope(perUser);
  Dictionary root = storage.file.Load();
  if (storage.file.ReadFailure()) {
    Count(&Config::StorageFailures::reads, storage, storage.file.ReadFailure());
  }
  return root;
}

std::vector<std::string> Components(std::string path) {
  if (path.ends_with('\\')) path.pop_back();
  std::vector<std::string> components;
  std::size_t start = 0;
  for (std::size_t end = 0; (end = path.find('\\', start)) != std::string::npos; start = end + 1) {
    components.push_back(path.substr(start, end - start));
  }
  components.push_back(path.substr(start));
  return components;
}

Dictionary& Descend(Dictionary& container, const std::string& name) {
  Value* child = container.Find(name);
  if (child == nullptr || child->As<Dictionary>() == nullptr) child = &container.Set(name, Dictionary());
  return *child->As<Dictionary>();
}

// Loads the tree; returns the container in which the last component of the raw key lives, and that component.
Dictionary& GetContainerAndKeyForRawKey(bool perUser, const std::wstring& rawKey, std::wstring& key) {
  wholeFile = Load(perUser);
  const std::string path = util::narrow(rawKey);
  const std::vector<std::string> components = Components(path);
  key = util::widen(components.back());
  // A name that the file cannot hold unchanged would come back as another one.
  const bool isWritable = util::widen(PropertyList::WritableText(path)) == rawKey;
  if (!isWritable || components.size() >= PropertyList::kMaximumDepth) {
    CSRLog(2, "%s - key with %lu components is too deep or no text", "GetContainerAndKeyForRawKey",
           components.size());
    // Nothing is found there, and nothing stored there would be readable.
    static auto& outsideTheTree = *new Dictionary;
    outsideTheTree = Dictionary();  // forgets what a setter put there
    return outsideTheTree;
  }
  Dictionary* container = &wholeFile;
  for (std::size_t i = 0; i + 1 < components.size(); ++i) container = &Descend(*container, components[i]);
  return *container;
}

void PutPellContainer(bool perUser) {
  Storage& storage = StorageOfScope(perUser);
  if (const std::error_code error = storage.file.Save(wholeFile)) {
    CSRLog(2, "failed to write preferences to: %@", storage.file.Path().string());
    Count(&Config::StorageFailures::writes, storage, error);
  }
}

void Store(bool perUser, const std::wstring& rawKey, Value value) {
  const SyncGuard guard;
  std::wstring key;
  GetContainerAndKeyForRawKey(perUser, rawKey, key).Set(util::narrow(key), std::move(value));
  PutPellContainer(perUser);
}

// A copy of what is stored under the key.
std::optional<Value> Stored(bool perUser, const std::wstring& rawKey) {
  const SyncGuard guard;
  std::wstring key;
  const Dictionary& container = GetContainerAndKeyForRawKey(perUser, rawKey, key);
  const Value* const value = container.Find(util::narrow(key));
  return value != nullptr ? std::optional(*value) : std::nullopt;
}

}  // namespace

const std::filesystem::path& preferenceFile(bool perUser) {
  static const auto& files = *new PreferenceFiles(ComputePreferenceFiles());
  return perUser ? files.user : files.machine;
}

bool CMacConfiguration::GetUInt(const std::wstring& key, std::uint32_t fallback, std::uint32_t& value) const {
  value = fallback;
  const std::optional<Value> stored = Stored(perUser_, key);
  const std::optional<std::uint64_t> number = stored ? stored->AsNumber() : std::nullopt;
  if (number) value = static_cast<std::uint32_t>(*number & std::numeric_limits<std::uint32_t>::max());
  return number.has_value();
}

bool CMacConfiguration::GetBoolean(const std::wstring& key, bool fallback, bool& value) const {
  value = fallback;
  const std::optional<Value> stored = Stored(perUser_, key);
  const std::optional<std::uint64_t> number = stored ? stored->AsNumber() : std::nullopt;
  if (!number) return false;
  const auto* const real = stored->As<double>();
  value = real != nullptr ? *real != 0.0 : *number != 0;
  return true;
}

bool CMacConfiguration::GetString(const std::wstring& key, const std::wstring& fallback,
                                  std::wstring& value) const {
  const std::optional<Value> stored = Stored(perUser_, key);
  const auto* const text = stored ? stored->As<std::string>() : nullptr;
  value = text != nullptr ? util::widen(*text) : fallback;
  return text != nullptr;
}

bool CMacConfiguration::GetBinary(const std::wstring& /*key*/, std::uint8_t* /*buffer*/,
                                  std::uint32_t& /*size*/) const {
  throw "GetBinary needs to be finished";
}

bool CMacConfiguration::SetBinary(const std::wstring& /*key*/, const std::uint8_t* /*bytes*/,
                                  std::uint32_t /*size*/) const {
  CSRLog(2, "CMacConfiguration::SetBinary is not relevant on Mac and should never be called");
  return false;
}

bool CMacConfiguration::GetList(const std::wstring& key, std::vector<std::wstring>& list) const {
  list.clear();
  const std::optional<Value> stored = Stored(perUser_, key);
  const auto* const array = stored ? stored->As<PropertyList::Array>() : nullptr;
  if (array == nullptr) return false;
  for (const Value& element : *array) {
    if (const auto* text = element.As<std::string>()) list.push_back(util::widen(*text));
  }
  return true;
}

bool CMacConfiguration::SetList(const std::wstring& key, const std::vector<std::wstring>& list) const {
  PropertyList::Array array;
  for (const std::wstring& text : list) array.emplace_back(util::narrow(text));
  Store(perUser_, key, std::move(array));
  return true;
}

bool CMacConfiguration::SetUInt(const std::wstring& key, std::uint32_t value) const {
  Store(perUser_, key, value);
  return true;
}

bool CMacConfiguration::SetBoolean(const std::wstring& key, bool value) const {
  Store(perUser_, key, value);
  return true;
}

bool CMacConfiguration::SetString(const std::wstring& key, const std::wstring& value) const {
  Store(perUser_, key, util::narrow(value));
  return true;
}

bool CMacConfiguration::CreateContainer(const std::wstring& rawKey) const {
  const SyncGuard guard;
  std::wstring key;
  Dictionary& container = GetContainerAndKeyForRawKey(perUser_, rawKey, key);
  if (container.Find(util::narrow(key)) != nullptr) return true;
  container.Set(util::narrow(key), Dictionary());
  PutPellContainer(perUser_);
  return true;
}

bool CMacConfiguration::DeleteContainer(const std::wstring& rawKey) const {
  const SyncGuard guard;
  std::wstring key;
  GetContainerAndKeyForRawKey(perUser_, rawKey, key).Erase(util::narrow(key));
  PutPellContainer(perUser_);
  return true;
}

bool CMacConfiguration::DeleteValue(const std::wstring& /*key*/) const {
  throw "Need code for DeleteValue";
}

bool CMacConfiguration::EnumContainers(const std::wstring& key, std::uint32_t index,
                                       std::wstring& name) const {
  const std::optional<Value> stored = Stored(perUser_, key);
  const auto* const container = stored ? stored->As<Dictionary>() : nullptr;
  if (container == nullptr) return false;
  for (const PropertyList::Entry& entry : container->Entries()) {
    if (entry.value.As<Dictionary>() == nullptr || index-- != 0) continue;
    name = util::widen(entry.key);
    return true;
  }
  return false;
}

bool CMacConfiguration::EnumValues(const std::wstring& /*key*/, std::uint32_t /*index*/,
                                   std::wstring& /*name*/, std::uint32_t& /*type*/) const {
  throw "Need code for EnumValue";  // deliberately without the s
}

std::uint32_t CMacConfiguration::NotifyContainer(const std::wstring& /*key*/, bool /*recursive*/,
                                                 std::uint32_t /*events*/,
                                                 Config::ContainerCallback /*callback*/,
                                                 void* /*context*/) const {
  throw "Need code for NotifyContainer";
}

bool CMacConfiguration::UnnotifyContainer(const std::uint32_t& /*handle*/) const {
  throw "Need code for UnnotifyContainer";
}

Config::StorageFailures CMacConfiguration::Failures() const {
  const SyncGuard guard;
  return StorageOfScope(perUser_).failures;
}

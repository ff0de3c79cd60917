#include "MacConfiguration.h"

#include "DbgTrace.h"
#include "Files/ConfigurationFile.h"
#include "Files/GatheredChanges.h"
#include "Files/KeyPath.h"
#include "Files/NumberedContainers.h"
#include "libs/Text/TextHelpers.h"

#include <limits>
#include <optional>
#include <span>
#include <string>
#include <utility>

namespace {

using PropertyList::Dictionary;
using PropertyList::Value;

// As the file gives it back.
std::string Text(std::wstring text) {
  std::erase_if(text, [](wchar_t character) { return !PropertyList::IsWritable(character); });
  return util::narrow(text);
}

ConfigurationFile::Tree Load(bool perUser) {
  if (GatheredChanges* const gathered = GatheredChanges::OfThisThread(perUser)) return gathered->Tree();
  return ConfigurationFile::OfScope(perUser).Load();
}

// Loads the tree; returns the container in which the last component of the raw key lies, null when there is
// none, and that component.
std::shared_ptr<const Dictionary> GetContainerAndKeyForRawKey(bool perUser, const std::wstring& rawKey,
                                                              std::string& key) {
  ConfigurationFile::Tree tree = Load(perUser);
  const std::optional<KeyPath> path = KeyPath::Of(rawKey);
  if (!path) return nullptr;
  key = path->EntryName();
  const Dictionary* const container = path->ContainerIn(*tree);
  return {std::move(tree), container};
}

// What is stored under the key; null when nothing is.
std::shared_ptr<const Value> Stored(bool perUser, const std::wstring& rawKey) {
  std::string key;
  auto container = GetContainerAndKeyForRawKey(perUser, rawKey, key);
  const Value* const value = container != nullptr ? container->Find(key) : nullptr;
  return {std::move(container), value};
}

template <class Kind>
std::shared_ptr<const Kind> StoredAs(bool perUser, const std::wstring& rawKey) {
  auto stored = Stored(perUser, rawKey);
  const Kind* const kind = stored != nullptr ? stored->As<Kind>() : nullptr;
  return {std::move(stored), kind};
}

void Change(bool perUser, TreeChange::Kind kind, const std::wstring& rawKey, Value value = {}) {
  std::optional<KeyPath> path = KeyPath::Of(rawKey);
  if (!path) return;
  TreeChange change{kind, *std::move(path), std::move(value)};
  if (GatheredChanges* const gathered = GatheredChanges::OfThisThread(perUser)) {
    gathered->Add(std::move(change));
  } else {
    ConfigurationFile::OfScope(perUser).PutInPlace(std::span(&change, 1));
  }
}

void Store(bool perUser, const std::wstring& rawKey, Value value) {
  Change(perUser, TreeChange::Kind::Set, rawKey, std::move(value));
}

}  // namespace

bool CMacConfiguration::GetUInt(const std::wstring& key, std::uint32_t fallback, std::uint32_t& value) const {
  value = fallback;
  const auto stored = Stored(perUser_, key);
  const std::optional<std::uint64_t> number = stored ? stored->AsNumber() : std::nullopt;
  if (number) value = static_cast<std::uint32_t>(*number & std::numeric_limits<std::uint32_t>::max());
  return number.has_value();
}

bool CMacConfiguration::GetBoolean(const std::wstring& key, bool fallback, bool& value) const {
  value = fallback;
  const auto stored = Stored(perUser_, key);
  const std::optional<std::uint64_t> number = stored ? stored->AsNumber() : std::nullopt;
  if (!number) return false;
  const auto* const real = stored->As<double>();
  value = real != nullptr ? *real != 0.0 : *number != 0;
  return true;
}

bool CMacConfiguration::GetString(const std::wstring& key, const std::wstring& fallback,
                                  std::wstring& value) const {
  const auto text = StoredAs<std::string>(perUser_, key);
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
  const auto array = StoredAs<PropertyList::Array>(perUser_, key);
  if (array == nullptr) return false;
  for (const Value& element : *array) {
    if (const auto* text = element.As<std::string>()) list.push_back(util::widen(*text));
  }
  return true;
}

bool CMacConfiguration::SetList(const std::wstring& key, const std::vector<std::wstring>& list) const {
  PropertyList::Array array;
  for (const std::wstring& text : list) array.emplace_back(Text(text));
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
  Store(perUser_, key, Text(value));
  return true;
}

bool CMacConfiguration::CreateContainer(const std::wstring& key) const {
  Change(perUser_, TreeChange::Kind::CreateContainer, key);
  return true;
}

bool CMacConfiguration::DeleteContainer(const std::wstring& key) const {
  Change(perUser_, TreeChange::Kind::Delete, key);
  return true;
}

bool CMacConfiguration::DeleteValue(const std::wstring& /*key*/) const {
  throw "Need code for DeleteValue";
}

bool CMacConfiguration::EnumContainers(const std::wstring& key, std::uint32_t index,
                                       std::wstring& name) const {
  const auto container = StoredAs<Dictionary>(perUser_, key);
  if (container == nullptr) return false;
  GatheredChanges* const gathered = GatheredChanges::OfThisThread(perUser_);
  NumberedContainers fromTheFirst(*container);
  NumberedContainers& containers = gathered != nullptr ? gathered->ContainersOf(*container) : fromTheFirst;
  const std::string* const found = containers.NameOf(index);
  if (found != nullptr) name = util::widen(*found);
  return found != nullptr;
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

std::unique_ptr<Config::Gathering> CMacConfiguration::Gather() const {
  if (GatheredChanges::OfThisThread(perUser_) != nullptr) return Configurator::Gather();
  return std::make_unique<GatheredChanges>(perUser_);
}

Config::StorageFailures CMacConfiguration::Failures() const {
  return ConfigurationFile::OfScope(perUser_).Failures();
}

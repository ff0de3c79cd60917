#include "SRLib/Repository/ConfigurationTree.h"

#include "SRLib/Repository/GatheredChanges.h"
#include "SRLib/Repository/NumberedContainers.h"
#include "libs/Text/TextHelpers.h"

#include <limits>
#include <utility>

namespace Config {
namespace {

using PropertyList::Dictionary;
using PropertyList::Value;

// As a property list's file gives it back.
std::string Text(std::wstring text) {
  std::erase_if(text, [](wchar_t character) { return !PropertyList::IsWritable(character); });
  return util::narrow(text);
}

}  // namespace

std::optional<KeyPath> ConfigurationTree::PathOf(const std::wstring& rawKey) const {
  std::optional<KeyPath> path = KeyPath::Of(rawKey);
  if (!path) storage_.Refuse(KeyPath::ComponentsOf(rawKey));
  return path;
}

ConfigurationStorage::Tree ConfigurationTree::GetContainerAndKeyForRawKey(const std::wstring& rawKey,
                                                                          std::string& key) const {
  GatheredChanges* const gathered = GatheredChanges::OfThisThread(storage_);
  ConfigurationStorage::Tree tree = gathered != nullptr ? gathered->Tree() : storage_.Load();
  const std::optional<KeyPath> path = PathOf(rawKey);
  if (!path) return nullptr;
  key = path->EntryName();
  const Dictionary* const container = path->ContainerIn(*tree);
  return {std::move(tree), container};
}

std::shared_ptr<const Value> ConfigurationTree::Stored(const std::wstring& rawKey) const {
  std::string key;
  auto container = GetContainerAndKeyForRawKey(rawKey, key);
  const Value* const value = container != nullptr ? container->Find(key) : nullptr;
  return {std::move(container), value};
}

template <class Kind>
std::shared_ptr<const Kind> ConfigurationTree::StoredAs(const std::wstring& rawKey) const {
  auto stored = Stored(rawKey);
  const Kind* const kind = stored != nullptr ? stored->As<Kind>() : nullptr;
  return {std::move(stored), kind};
}

void ConfigurationTree::Change(TreeChange::Kind kind, const std::wstring& rawKey, Value value) const {
  std::optional<KeyPath> path = PathOf(rawKey);
  if (!path) return;
  TreeChange change{kind, *std::move(path), std::move(value)};
  if (GatheredChanges* const gathered = GatheredChanges::OfThisThread(storage_)) {
    gathered->Add(std::move(change));
  } else {
    storage_.Replace([&change](Dictionary& root) { return Apply(std::span(&change, 1), root); });
  }
}

bool ConfigurationTree::Store(const std::wstring& rawKey, Value value) const {
  Change(TreeChange::Kind::Set, rawKey, std::move(value));
  return true;
}

bool ConfigurationTree::GetUInt(const std::wstring& key, std::uint32_t fallback, std::uint32_t& value) const {
  value = fallback;
  const auto stored = Stored(key);
  const std::optional<std::uint64_t> number = stored ? stored->AsNumber() : std::nullopt;
  if (number) value = static_cast<std::uint32_t>(*number & std::numeric_limits<std::uint32_t>::max());
  return number.has_value();
}

bool ConfigurationTree::GetBoolean(const std::wstring& key, bool fallback, bool& value) const {
  value = fallback;
  const auto stored = Stored(key);
  const std::optional<std::uint64_t> number = stored ? stored->AsNumber() : std::nullopt;
  if (!number) return false;
  const auto* const real = stored->As<double>();
  value = real != nullptr ? *real != 0.0 : *number != 0;
  return true;
}

bool ConfigurationTree::GetString(const std::wstring& key, const std::wstring& fallback,
                                  std::wstring& value) const {
  const auto text = StoredAs<std::string>(key);
  value = text != nullptr ? util::widen(*text) : fallback;
  return text != nullptr;
}

bool ConfigurationTree::GetBinary(const std::wstring& /*key*/, std::uint8_t* /*buffer*/,
                                  std::uint32_t& /*size*/) const {
  throw "GetBinary needs to be finished";
}

bool ConfigurationTree::GetList(const std::wstring& key, std::vector<std::wstring>& list) const {
  list.clear();
  const auto array = StoredAs<PropertyList::Array>(key);
  if (array == nullptr) return false;
  for (const Value& element : *array) {
    if (const auto* text = element.As<std::string>()) list.push_back(util::widen(*text));
  }
  return true;
}

bool ConfigurationTree::SetList(const std::wstring& key, const std::vector<std::wstring>& list) const {
  PropertyList::Array array;
  for (const std::wstring& text : list) array.emplace_back(Text(text));
  return Store(key, std::move(array));
}

bool ConfigurationTree::SetUInt(const std::wstring& key, std::uint32_t value) const {
  return Store(key, value);
}

bool ConfigurationTree::SetBoolean(const std::wstring& key, bool value) const {
  return Store(key, value);
}

bool ConfigurationTree::SetString(const std::wstring& key, const std::wstring& value) const {
  return Store(key, Text(value));
}

bool ConfigurationTree::CreateContainer(const std::wstring& key) const {
  Change(TreeChange::Kind::CreateContainer, key);
  return true;
}

bool ConfigurationTree::DeleteContainer(const std::wstring& key) const {
  Change(TreeChange::Kind::Delete, key);
  return true;
}

bool ConfigurationTree::DeleteValue(const std::wstring& /*key*/) const {
  throw "Need code for DeleteValue";
}

bool ConfigurationTree::EnumContainers(const std::wstring& key, std::uint32_t index,
                                       std::wstring& name) const {
  const auto container = StoredAs<Dictionary>(key);
  if (container == nullptr) return false;
  GatheredChanges* const gathered = GatheredChanges::OfThisThread(storage_);
  NumberedContainers fromTheFirst(*container);
  NumberedContainers& containers = gathered != nullptr ? gathered->ContainersOf(*container) : fromTheFirst;
  const std::string* const found = containers.NameOf(index);
  if (found != nullptr) name = util::widen(*found);
  return found != nullptr;
}

bool ConfigurationTree::EnumValues(const std::wstring& /*key*/, std::uint32_t /*index*/,
                                   std::wstring& /*name*/, std::uint32_t& /*type*/) const {
  throw "Need code for EnumValue";  // deliberately without the s
}

std::uint32_t ConfigurationTree::NotifyContainer(const std::wstring& /*key*/, bool /*recursive*/,
                                                 std::uint32_t /*events*/, ContainerCallback /*callback*/,
                                                 void* /*context*/) const {
  throw "Need code for NotifyContainer";
}

bool ConfigurationTree::UnnotifyContainer(const std::uint32_t& /*handle*/) const {
  throw "Need code for UnnotifyContainer";
}

std::unique_ptr<Gathering> ConfigurationTree::Gather() const {
  return std::make_unique<GatheredChanges>(storage_);
}

}  // namespace Config

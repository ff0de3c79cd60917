#include "SRLib/Repository/KeyPath.h"

#include "libs/Text/TextHelpers.h"

#include <algorithm>

namespace Config {
namespace {

using PropertyList::Dictionary;
using PropertyList::Value;

constexpr char kSeparator = '\\';

// Takes the first name off the path; nothing when only the entry's is left.
std::optional<std::string_view> TakeContainerName(std::string_view& path) {
  const std::size_t length = path.find(kSeparator);
  if (length == std::string_view::npos) return std::nullopt;
  const std::string_view name = path.substr(0, length);
  path.remove_prefix(length + 1);
  return name;
}

}  // namespace

std::size_t KeyPath::ComponentsOf(const std::wstring& rawKey) {
  const auto separators = static_cast<std::size_t>(std::ranges::count(rawKey, kSeparator));
  return rawKey.ends_with(kSeparator) ? separators : separators + 1;
}

std::optional<KeyPath> KeyPath::Of(const std::wstring& rawKey) {
  const bool isWritable = std::ranges::all_of(rawKey, PropertyList::IsWritable);
  if (!isWritable || ComponentsOf(rawKey) >= PropertyList::kMaximumDepth) return std::nullopt;
  std::string path = util::narrow(rawKey);
  if (path.ends_with(kSeparator)) path.pop_back();
  return KeyPath(std::move(path));
}

std::string_view KeyPath::Way() const {
  return std::string_view(names_).substr(0, names_.rfind(kSeparator) + 1);
}

std::string_view KeyPath::EntryName() const {
  return std::string_view(names_).substr(names_.rfind(kSeparator) + 1);
}

const Dictionary* KeyPath::ContainerIn(const Dictionary& root) const {
  const Dictionary* container = &root;
  std::string_view path = names_;
  while (const auto name = TakeContainerName(path)) {
    const Value* const child = container->Find(*name);
    container = child != nullptr ? child->As<Dictionary>() : nullptr;
    if (container == nullptr) return nullptr;
  }
  return container;
}

Dictionary& KeyPath::MakeContainerIn(Dictionary& root) const {
  Dictionary* container = &root;
  std::string_view path = names_;
  while (const auto name = TakeContainerName(path)) {
    Value* child = container->Find(*name);
    if (child == nullptr || child->As<Dictionary>() == nullptr) child = &container->Set(*name, Dictionary());
    container = child->As<Dictionary>();
  }
  return *container;
}

}  // namespace Config

#include "Files/KeyPath.h"

#include "DbgTrace.h"
#include "libs/Text/TextHelpers.h"

#include <algorithm>

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

std::optional<KeyPath> KeyPath::Of(const std::wstring& rawKey) {
  std::string path = util::narrow(rawKey);
  const bool isWritable = std::ranges::all_of(rawKey, PropertyList::IsWritable);
  if (path.ends_with(kSeparator)) path.pop_back();
  const auto names = static_cast<std::size_t>(std::ranges::count(path, kSeparator)) + 1;
  if (isWritable && names < PropertyList::kMaximumDepth) return KeyPath(std::move(path));
  CSRLog(2, "%s - key with %lu components is too deep or no text", "GetContainerAndKeyForRawKey", names);
  return std::nullopt;
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

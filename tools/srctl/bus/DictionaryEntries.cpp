#include "bus/DictionaryEntries.h"

namespace Srctl {

template <class Kind>
const Kind* DictionaryEntries::Find(const char* key) {
  const PropertyList::Value* const value = dictionary_.Find(key);
  const Kind* const found = value == nullptr ? nullptr : value->As<Kind>();
  if (value != nullptr && found == nullptr) areAsExpected_ = false;
  return found;
}

void DictionaryEntries::Take(const char* key, std::string& text) {
  if (const auto* found = Find<std::string>(key)) text = *found;
}

void DictionaryEntries::Take(const char* key, bool& truth) {
  if (const auto* found = Find<bool>(key)) truth = *found;
}

void DictionaryEntries::Take(const char* key, std::uint64_t& number) {
  const PropertyList::Value* const value = dictionary_.Find(key);
  if (value == nullptr) return;
  const auto found = value->AsNumber();
  if (found) number = *found;
  if (!found) areAsExpected_ = false;
}

const PropertyList::Array* DictionaryEntries::TakeArray(const char* key) {
  return Find<PropertyList::Array>(key);
}

}  // namespace Srctl

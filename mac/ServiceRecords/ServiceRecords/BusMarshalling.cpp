#include "BusMarshalling.h"

#include "SRLib/TextHelpers.h"

#include <algorithm>
#include <cerrno>
#include <utility>
#include <vector>

namespace {

// A variant of one basic value.
int AppendBasic(sd_bus_message* message, char type, const void* value) {
  const char contents[] = {type, '\0'};
  int result = sd_bus_message_open_container(message, SD_BUS_TYPE_VARIANT, contents);
  if (result >= 0) result = sd_bus_message_append_basic(message, type, value);
  return result < 0 ? result : sd_bus_message_close_container(message);
}

int AppendVariant(sd_bus_message* message, const PropertyList::Value& value) {
  if (const auto* text = value.As<std::string>()) {
    return AppendBasic(message, SD_BUS_TYPE_STRING, text->c_str());
  }
  if (const auto* truth = value.As<bool>()) {
    const int flag = static_cast<int>(*truth);
    return AppendBasic(message, SD_BUS_TYPE_BOOLEAN, &flag);
  }
  if (const auto* array = value.As<PropertyList::Array>()) {
    int result = sd_bus_message_open_container(message, SD_BUS_TYPE_VARIANT, "aa{sv}");
    if (result >= 0) result = AppendDictionaries(message, *array);
    return result < 0 ? result : sd_bus_message_close_container(message);
  }
  if (const auto number = value.AsNumber()) return AppendBasic(message, SD_BUS_TYPE_UINT64, &*number);
  return -EINVAL;
}

PropertyList::Value BusValue(const PropertyList::Value& value) {
  if (const auto* text = value.As<std::string>()) return BusText(*text);
  if (const auto* dictionary = value.As<PropertyList::Dictionary>()) return BusDictionary(*dictionary);
  const auto* array = value.As<PropertyList::Array>();
  if (array == nullptr) return value;
  PropertyList::Array items;
  for (const PropertyList::Value& item : *array) items.push_back(BusValue(item));
  return items;
}

}  // namespace

std::string BusText(const std::string& utf8) {
  constexpr wchar_t kReplacement = 0xFFFD;
  std::wstring text = util::widen(utf8);
  std::ranges::replace_if(
      text, [](wchar_t character) { return character == 0 || util::IsNoncharacter(character); },
      kReplacement);
  return util::narrow(text);
}

PropertyList::Dictionary BusDictionary(const PropertyList::Dictionary& dictionary) {
  std::vector<PropertyList::Entry> entries;
  for (const auto& [key, value] : dictionary.Entries()) entries.push_back({key, BusValue(value)});
  return PropertyList::Dictionary(std::move(entries));
}

int AppendDictionary(sd_bus_message* message, const PropertyList::Dictionary& dictionary) {
  int result = sd_bus_message_open_container(message, SD_BUS_TYPE_ARRAY, "{sv}");
  for (const auto& [key, value] : dictionary.Entries()) {
    if (result >= 0) result = sd_bus_message_open_container(message, SD_BUS_TYPE_DICT_ENTRY, "sv");
    if (result >= 0) result = sd_bus_message_append_basic(message, SD_BUS_TYPE_STRING, key.c_str());
    if (result >= 0) result = AppendVariant(message, value);
    if (result >= 0) result = sd_bus_message_close_container(message);
  }
  return result < 0 ? result : sd_bus_message_close_container(message);
}

int AppendDictionaries(sd_bus_message* message, const PropertyList::Array& dictionaries) {
  int result = sd_bus_message_open_container(message, SD_BUS_TYPE_ARRAY, "a{sv}");
  for (const PropertyList::Value& item : dictionaries) {
    const auto* dictionary = item.As<PropertyList::Dictionary>();
    if (result >= 0) result = dictionary == nullptr ? -EINVAL : AppendDictionary(message, *dictionary);
  }
  return result < 0 ? result : sd_bus_message_close_container(message);
}

#include "BusMarshalling.h"

#include "SRLib/TextHelpers.h"

#include <algorithm>
#include <cerrno>

namespace {

int AppendVariant(sd_bus_message* message, const PropertyList::Value& value) {
  if (const auto* text = value.As<std::string>())
    return sd_bus_message_append(message, "v", "s", BusText(*text).c_str());
  if (const auto* truth = value.As<bool>())
    return sd_bus_message_append(message, "v", "b", static_cast<int>(*truth));
  if (const auto* array = value.As<PropertyList::Array>()) {
    int result = sd_bus_message_open_container(message, SD_BUS_TYPE_VARIANT, "aa{sv}");
    if (result >= 0) result = AppendDictionaries(message, *array);
    return result < 0 ? result : sd_bus_message_close_container(message);
  }
  if (const auto number = value.AsNumber()) return sd_bus_message_append(message, "v", "t", *number);
  return -EINVAL;
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

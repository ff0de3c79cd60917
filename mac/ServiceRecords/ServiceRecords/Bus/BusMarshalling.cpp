#include "Bus/BusMarshalling.h"

#include "Bus/BusObject.h"
#include "libs/Text/TextHelpers.h"

#include <algorithm>
#include <cerrno>

namespace {

bool IsRefused(wchar_t character) {
  return character == 0 || util::IsNoncharacter(character);
}

// A variant of one basic value.
int AppendBasic(sd_bus_message* message, char type, const void* value) {
  const char contents[] = {type, '\0'};
  int result = sd_bus_message_open_container(message, SD_BUS_TYPE_VARIANT, contents);
  if (result >= 0) result = sd_bus_message_append_basic(message, type, value);
  return result < 0 ? result : sd_bus_message_close_container(message);
}

int AppendArray(sd_bus_message* message, const PropertyList::Array& dictionaries) {
  int result = sd_bus_message_open_container(message, SD_BUS_TYPE_ARRAY, "a{sv}");
  for (const PropertyList::Value& item : dictionaries) {
    const auto* dictionary = item.As<PropertyList::Dictionary>();
    if (result >= 0) result = dictionary == nullptr ? -EINVAL : AppendDictionary(message, *dictionary);
  }
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
    if (result >= 0) result = AppendArray(message, *array);
    return result < 0 ? result : sd_bus_message_close_container(message);
  }
  if (const auto number = value.AsNumber()) return AppendBasic(message, SD_BUS_TYPE_UINT64, &*number);
  return -EINVAL;
}

}  // namespace

std::string BusText(std::wstring_view text) {
  if (std::ranges::none_of(text, IsRefused)) return util::narrow(text);
  constexpr wchar_t kReplacement = 0xFFFD;
  std::wstring carried(text);
  std::ranges::replace_if(carried, IsRefused, kReplacement);
  return util::narrow(carried);
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

int AppendDictionaries(sd_bus_message* message, const PropertyList::SharedDictionaries& dictionaries) {
  int result = sd_bus_message_open_container(message, SD_BUS_TYPE_ARRAY, "a{sv}");
  for (const auto& dictionary : dictionaries) {
    if (result >= 0) result = AppendDictionary(message, *dictionary);
  }
  return result < 0 ? result : sd_bus_message_close_container(message);
}

int ReplyWithDictionary(sd_bus_message* call, const std::optional<PropertyList::Dictionary>& dictionary) {
  const PropertyList::Dictionary nothing;
  return ReplyWith(call, [&](sd_bus_message* reply) {
    return AppendDictionary(reply, dictionary ? *dictionary : nothing);
  });
}

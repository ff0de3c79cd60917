#include "bus/DictionaryReading.h"

namespace dictionaryreading {
namespace {

int ReadValue(sd_bus_message* message, const char* contents, const ValueReader& read) {
  int status = sd_bus_message_enter_container(message, SD_BUS_TYPE_VARIANT, contents);
  if (status >= 0) status = read(message);
  if (status >= 0) status = sd_bus_message_exit_container(message);
  return status;
}

// The value of the entry whose key was just read.
int ReadEntryValue(sd_bus_message* message, const std::string& key, const ValueReaders& readers) {
  for (const auto& [name, reader] : readers) {
    if (name == key) return ReadValue(message, reader.first, reader.second);
  }
  return sd_bus_message_skip(message, "v");
}

}  // namespace

ValueReader Text(std::string& out) {
  return [&out](sd_bus_message* message) {
    const char* text = nullptr;
    const int status = sd_bus_message_read_basic(message, 's', &text);
    if (status > 0) out = text;
    return status;
  };
}

ValueReader Number(std::uint64_t& out) {
  return [&out](sd_bus_message* message) { return sd_bus_message_read_basic(message, 't', &out); };
}

ValueReader Flag(bool& out) {
  return [&out](sd_bus_message* message) {
    int value = 0;
    const int status = sd_bus_message_read_basic(message, 'b', &value);
    out = value != 0;
    return status;
  };
}

int ReadDictionary(sd_bus_message* message, const ValueReaders& readers) {
  int status = sd_bus_message_enter_container(message, SD_BUS_TYPE_ARRAY, "{sv}");
  while (status >= 0) {
    status = sd_bus_message_enter_container(message, SD_BUS_TYPE_DICT_ENTRY, "sv");
    if (status <= 0) break;
    const char* key = nullptr;
    status = sd_bus_message_read_basic(message, SD_BUS_TYPE_STRING, &key);
    if (status >= 0) status = ReadEntryValue(message, key, readers);
    if (status >= 0) status = sd_bus_message_exit_container(message);
  }
  return status < 0 ? status : sd_bus_message_exit_container(message);
}

}  // namespace dictionaryreading

#pragma once

#include "libs/Bus/SdBus.h"

#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

// Dictionaries (a{sv}) of a bus message, read into variables. Every function returns the bus library's
// negative error code on failure. One thread.
namespace dictionaryreading {

// A reader of one value of a dictionary: gets the message inside the variant, returns a negative error code
// or a value above zero.
using ValueReader = std::function<int(sd_bus_message*)>;
// By key: the signature of the variant's contents and what reads them.
using ValueReaders = std::vector<std::pair<std::string, std::pair<const char*, ValueReader>>>;

// Readers into a variable, which they refer to.
[[nodiscard]] ValueReader Text(std::string& out);      // s
[[nodiscard]] ValueReader Number(std::uint64_t& out);  // t
[[nodiscard]] ValueReader Flag(bool& out);             // b

// Entries that nobody reads are passed over.
[[nodiscard]] int ReadDictionary(sd_bus_message* message, const ValueReaders& readers);

template <class Item>
[[nodiscard]] int ReadDictionaries(sd_bus_message* message, std::vector<Item>& items,
                                   int (*readItem)(sd_bus_message* message, Item& item)) {
  int status = sd_bus_message_enter_container(message, SD_BUS_TYPE_ARRAY, "a{sv}");
  while (status >= 0 && sd_bus_message_at_end(message, 0) == 0) {
    status = readItem(message, items.emplace_back());
  }
  return status < 0 ? status : sd_bus_message_exit_container(message);
}

}  // namespace dictionaryreading

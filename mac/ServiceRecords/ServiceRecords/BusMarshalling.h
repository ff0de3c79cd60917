#pragma once

#include "SRLib/PropertyList/PropertyList.h"
#include "SdBus.h"

#include <string>

// The text as the bus carries it: characters that it refuses are replaced by U+FFFD, bytes that are not UTF-8
// left out.
[[nodiscard]] std::string BusText(const std::string& utf8);

// The dictionary, and those in its arrays, with text as the bus carries it.
[[nodiscard]] PropertyList::Dictionary BusDictionary(const PropertyList::Dictionary& dictionary);

// Dictionaries as bus messages carry them: a{sv} with text, which must be BusText, as s, whole numbers as t,
// booleans as b and arrays of dictionaries as aa{sv}. Both answer the bus library's negative error code on
// failure. Values of other kinds do not occur in what the services answer.
[[nodiscard]] int AppendDictionary(sd_bus_message* message, const PropertyList::Dictionary& dictionary);
[[nodiscard]] int AppendDictionaries(sd_bus_message* message, const PropertyList::Array& dictionaries);

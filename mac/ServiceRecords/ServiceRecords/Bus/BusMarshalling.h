#pragma once

#include "libs/Bus/SdBus.h"
#include "libs/PropertyList/PropertyList.h"

#include <optional>
#include <string>
#include <string_view>

// UTF-8 of the text as the bus carries it: characters that it refuses are replaced by U+FFFD.
[[nodiscard]] std::string BusText(std::wstring_view text);

// Dictionaries as bus messages carry them: a{sv} with text, which must be BusText, as s, whole numbers as t,
// booleans as b and arrays of dictionaries as aa{sv}. All answer the bus library's negative error code on
// failure. Values of other kinds do not occur in what the services answer.
[[nodiscard]] int AppendDictionary(sd_bus_message* message, const PropertyList::Dictionary& dictionary);
[[nodiscard]] int AppendDictionaries(sd_bus_message* message,
                                     const PropertyList::SharedDictionaries& dictionaries);
// Answers the call with the dictionary, or with an empty one for nothing.
[[nodiscard]] int ReplyWithDictionary(sd_bus_message* call,
                                      const std::optional<PropertyList::Dictionary>& dictionary);

#pragma once

#include "libs/PropertyList/PropertyList.h"
#include "libs/Wording/Message.h"

// A message as a dictionary that the bus carries: a foreign text as Text, one of ours as Pattern and Places,
// an array with a dictionary for each place, which is that of its message with its Name besides.
namespace Wording::MessageDictionary {

[[nodiscard]] PropertyList::Dictionary Of(const Message& message);
// What is missing or of another kind reads as empty.
[[nodiscard]] Message Read(const PropertyList::Dictionary& dictionary);

}  // namespace Wording::MessageDictionary

#pragma once

#include "libs/Wording/Message.h"

#include <string>

namespace Windows {

// The message in the user's language, or in English where the catalogue has no translation of it, fit for a
// window: what is foreign in it is made so, and isolated within a text of ours.
[[nodiscard]] std::string ShownMessage(const Wording::Message& message);

}  // namespace Windows

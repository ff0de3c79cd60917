#pragma once

#include "Model/Store.h"

#include <optional>

// Where this machine stands relative to a store, for people.
namespace Stores::LocationWords {

struct Words {
  const char* sentence;  // in the user's language
  const char* icon;      // its name in the icon theme
};

// Of one that is not known yet, too.
[[nodiscard]] Words Of(const std::optional<Location>& location);

}  // namespace Stores::LocationWords

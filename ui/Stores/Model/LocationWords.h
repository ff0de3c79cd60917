#pragma once

#include <cstdint>

// Where this machine stands relative to a store, for people.
namespace Stores::LocationWords {

struct Words {
  const char* sentence;  // in the user's language
  const char* icon;      // its name in the icon theme
};

[[nodiscard]] Words Of(std::uint64_t location);

}  // namespace Stores::LocationWords

#pragma once

#include <string>
#include <string_view>

namespace Bus {

// UTF-8 of the text as the bus carries it: characters that it refuses are replaced by U+FFFD.
[[nodiscard]] std::string Text(std::wstring_view text);

}  // namespace Bus

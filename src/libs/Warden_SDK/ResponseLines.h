#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Warden {

struct ResponseLine {
  std::string name;   // lower case
  std::string value;  // without blanks at its ends
};

// The lines of an answer that can be relied upon; null-terminated, or null for none. Left out are lines that
// hold a line break or another control character than a tab, have no name and colon, or are longer than 64
// KiB; and whatever follows the first 1000 lines.
[[nodiscard]] std::vector<ResponseLine> UsableLines(const wchar_t* const* lines);

}  // namespace Warden

#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// Text that somebody else wrote, made fit for a terminal (UTF-8). Whatever could move the cursor, hide,
// reorder or restyle what the program itself says (control characters, direction and invisible format
// characters, bytes that are not UTF-8) becomes U+FFFD; text longer than the limit is cut and ends in an
// ellipsis.
namespace TerminalText {

// One line; a line break is a control character like any other.
[[nodiscard]] std::string OneLine(std::string_view utf8, std::size_t maximumCharacters);

// Several lines, each indented by two spaces, so that none can pass for the program's own.
[[nodiscard]] std::string Indented(std::string_view utf8, std::size_t maximumCharacters);

}  // namespace TerminalText

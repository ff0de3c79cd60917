#pragma once

#include <cstddef>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

// Text that somebody else wrote, made fit for a terminal (UTF-8). Whatever could move the cursor, hide,
// reorder or restyle what the program itself says (control characters, direction and invisible format
// characters) becomes U+FFFD; bytes that are not UTF-8 are left out; text longer than the limit is cut and
// ends in an ellipsis.
namespace Terminal {

inline constexpr std::size_t kNoLimit = std::numeric_limits<std::size_t>::max();
// What a question shows of a name or a path, in characters.
inline constexpr std::size_t kLongestText = 200;

// One line; a line break is a control character like any other.
[[nodiscard]] std::string OneLine(std::string_view utf8, std::size_t maximumCharacters = kNoLimit);

// The text with every run of blanks, of whatever width, as one U+0020, and none at its ends: blanks cannot
// push a part of it to another place.
[[nodiscard]] std::string SingleBlanks(std::string_view utf8);

// The text, one line already made fit, in lines of at most `columns`, broken at blanks where it has some; at
// least one line. Terminals disagree about the width of what is not ASCII, so that counts as two columns: a
// line may end early, but the terminal never goes on with it at its left edge.
[[nodiscard]] std::vector<std::string> Folded(std::string_view utf8, std::size_t columns);

// The lines of an address: all up to its path, however long, because the end of a host says whose it is, and
// the path, where there is one.
[[nodiscard]] std::vector<std::string> AddressLines(std::string_view utf8);

// Several lines with single blanks, folded for a terminal of `columns`, each indented by two spaces, so that
// none can pass for the program's own. One that is an address stands as AddressLines says.
[[nodiscard]] std::string Indented(std::string_view utf8, std::size_t columns);

// Columns that the text takes, for the process's LC_CTYPE.
[[nodiscard]] std::size_t Width(std::string_view utf8);

}  // namespace Terminal

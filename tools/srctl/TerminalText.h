#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// Text from documents and servers, made fit for a terminal.
namespace terminal {

// The UTF-8 text with everything that could steer a terminal or reorder the line (control characters,
// bidirectional controls, line separators) written as \u{hex}. Bytes that are not UTF-8 are left out.
[[nodiscard]] std::string Visible(std::string_view utf8);

// Columns that the text takes, for the process's LC_CTYPE.
[[nodiscard]] std::size_t Width(std::string_view utf8);

}  // namespace terminal

#pragma once

#include <string>
#include <string_view>

namespace util {

// Whether the character could move, hide, reorder or restyle what stands beside it, or is itself nothing to
// see: control characters, direction and invisible format characters. Blanks are none.
[[nodiscard]] bool IsHidden(wchar_t character);

// A character written out, as "<U+202E>".
[[nodiscard]] std::string CodeOf(wchar_t character);
// The text in UTF-8, with each hidden character written out.
[[nodiscard]] std::string WithHiddenShown(std::wstring_view text);

}  // namespace util

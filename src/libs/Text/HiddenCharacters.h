#pragma once

namespace util {

// Whether the character could move, hide, reorder or restyle what stands beside it, or is itself nothing to
// see: control characters, direction and invisible format characters. Blanks are none.
[[nodiscard]] bool IsHidden(wchar_t character);

}  // namespace util

#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace Wording {

// The pattern with its places "{name}" filled in by what is told for each name; one that nothing is told for
// stays. UTF-8; any thread.
using TextOfPlace = std::function<std::optional<std::string>(std::string_view name)>;
[[nodiscard]] std::string Filled(std::string_view pattern, const TextOfPlace& textOf);

}  // namespace Wording

#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace Dialogs {

// The numbers of a gateway in words for people; a number that has none stands for itself, none is empty.
namespace GatewayWords {

[[nodiscard]] std::string OfAuthentication(std::optional<std::uint64_t> authentication);
[[nodiscard]] std::string OfEdition(std::optional<std::uint64_t> edition);
[[nodiscard]] std::string OfRewriteMode(std::optional<std::uint64_t> mode);

}  // namespace GatewayWords

}  // namespace Dialogs

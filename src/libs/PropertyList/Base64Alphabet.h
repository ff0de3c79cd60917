#pragma once

#include <string_view>

namespace PropertyList {

// The character of each six-bit value (RFC 4648).
inline constexpr std::string_view kBase64Alphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

}  // namespace PropertyList

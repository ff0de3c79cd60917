#pragma once

#include <array>
#include <string_view>

namespace Agent {

using Sha256Digest = std::array<unsigned char, 32>;

// The SHA-256 of the bytes. Throws std::runtime_error when there is no memory for it. Any thread.
[[nodiscard]] Sha256Digest Sha256(std::string_view bytes);

}  // namespace Agent

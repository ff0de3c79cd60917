#pragma once

#include "libs/CredentialWire/Secret.h"

#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

// What the schemes need of the cryptographic library. Any thread.
namespace Warden {

enum class HashAlgorithm { MD5, SHA256 };

// The hash of the pieces, one behind the other, in lower-case hexadecimal. Nothing when the library does not
// offer the algorithm.
[[nodiscard]] std::optional<CredentialWire::Secret> HexHash(HashAlgorithm algorithm,
                                                            std::initializer_list<std::string_view> pieces);

[[nodiscard]] CredentialWire::Secret Base64(std::string_view bytes);
// Nothing when the text is no Base64.
[[nodiscard]] std::optional<std::string> FromBase64(std::string_view text);

// 32 hexadecimal digits that nobody can guess. Nothing without a source of randomness.
[[nodiscard]] std::optional<std::string> RandomDigits();

}  // namespace Warden

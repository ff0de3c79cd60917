#pragma once

#include "libs/Warden_SDK/Crypto.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace Warden {

struct Challenge;

// A Digest challenge (RFC 7616, and RFC 2617 without qop) that can be answered.
struct DigestChallenge {
  HashAlgorithm algorithm = HashAlgorithm::MD5;
  std::string algorithmName;  // as the server wrote it; empty where it did not
  bool isSession = false;     // a "-sess" variant
  bool hasQop = false;        // "auth" is on offer
  bool isUTF8 = false;
  bool isStale = false;
  std::string realm;
  std::string nonce;
  std::optional<std::string> opaque;

  // Nothing for another scheme, another algorithm, "auth-int" alone, or a challenge that lacks something.
  [[nodiscard]] static std::optional<DigestChallenge> From(const Challenge& challenge);
};

// What is answered for; good during the call only. All texts in UTF-8.
struct DigestRequest {
  std::string_view method;
  std::string_view target;
  std::string_view userName;
  std::string_view password;
  std::string_view clientNonce;
  std::uint32_t nonceCount = 1;
};

// The value of the answering header line. Nothing when the hash cannot be had.
[[nodiscard]] std::optional<CredentialWire::Secret> DigestAnswer(const DigestChallenge& challenge,
                                                                 const DigestRequest& request);

}  // namespace Warden

#pragma once

#include "libs/CredentialWire/Secret.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace CredentialWire {

// A request to the credential program or a reply of it: lines "key=value\n" in UTF-8, then an empty line. The
// values are wiped from memory. docs/credentials.md says which keys there are.
class CredentialMessage {
 public:
  // The longest message, its empty line included, in bytes.
  static constexpr std::size_t kMaximumBytes = std::size_t{64} * 1024;

  // A later value of the same key replaces the former one. False, and nothing set, for a value that holds a
  // line feed or a NUL.
  [[nodiscard]] bool Set(std::string_view key, std::string_view value);

  // Good until the next Set. Empty when there is no such key.
  [[nodiscard]] std::string_view Get(std::string_view key) const;

  [[nodiscard]] Secret Text() const;

  // How long the message at the start of the text is; nothing when its end is not there yet.
  [[nodiscard]] static std::optional<std::size_t> LengthOf(std::string_view text);
  // Nothing when a line has no key, or the message is too long or holds a NUL.
  [[nodiscard]] static std::optional<CredentialMessage> Parse(std::string_view text);

 private:
  struct Entry {
    std::string key;
    Secret value;
  };
  [[nodiscard]] const Entry* Find(std::string_view key) const;

  std::vector<Entry> entries_;
};

// The words of the messages.
namespace CredentialWords {

inline constexpr std::string_view kGet = "get";
inline constexpr std::string_view kStore = "store";
inline constexpr std::string_view kErase = "erase";

inline constexpr std::string_view kProtocol = "protocol";
inline constexpr std::string_view kHost = "host";
inline constexpr std::string_view kRealm = "realm";
inline constexpr std::string_view kPlace = "place";
inline constexpr std::string_view kAuthentication = "authentication";
inline constexpr std::string_view kRejected = "rejected";
inline constexpr std::string_view kStoreName = "store-name";
inline constexpr std::string_view kGatewayName = "gateway-name";
inline constexpr std::string_view kTerminal = "terminal";
inline constexpr std::string_view kUserName = "username";
inline constexpr std::string_view kPassword = "password";
inline constexpr std::string_view kCode = "code";
inline constexpr std::string_view kSource = "source";
inline constexpr std::string_view kRemember = "remember";
inline constexpr std::string_view kStatus = "status";
inline constexpr std::string_view kSecretService = "secret-service";
inline constexpr std::string_view kReason = "reason";

inline constexpr std::string_view kYes = "yes";
inline constexpr std::string_view kNo = "no";
inline constexpr std::string_view kStored = "stored";
inline constexpr std::string_view kAsked = "asked";

inline constexpr std::string_view kPlaceGateway = "gateway";
inline constexpr std::string_view kPlaceStore = "store";

inline constexpr std::string_view kRSA = "rsa";
inline constexpr std::string_view kNone = "none";
inline constexpr std::string_view kDomain = "domain";
inline constexpr std::string_view kDomainAndRSA = "domain-and-rsa";
inline constexpr std::string_view kSMS = "sms";
inline constexpr std::string_view kGatewayKnows = "gateway-knows";

inline constexpr std::string_view kOK = "ok";
inline constexpr std::string_view kCancelled = "cancelled";
inline constexpr std::string_view kNoTerminal = "no-terminal";
inline constexpr std::string_view kFailed = "failed";
inline constexpr std::string_view kBadRequest = "bad-request";

inline constexpr std::string_view kAvailable = "available";
inline constexpr std::string_view kMissing = "missing";
inline constexpr std::string_view kLocked = "locked";

}  // namespace CredentialWords

}  // namespace CredentialWire

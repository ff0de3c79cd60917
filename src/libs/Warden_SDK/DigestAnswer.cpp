#include "libs/Warden_SDK/DigestAnswer.h"

#include "libs/Text/TextHelpers.h"
#include "libs/Warden_SDK/Challenge.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace Warden {
namespace {

bool EqualsIgnoringCase(std::string_view left, std::string_view right) {
  return std::ranges::equal(left, right, {}, util::AsciiLower, util::AsciiLower);
}

std::string ValueOf(const Challenge& challenge, std::string_view name) {
  const std::string* value = challenge.Parameter(name);
  return value != nullptr ? *value : std::string();
}

struct Algorithm {
  std::string_view name;
  HashAlgorithm hash;
  bool isSession;
};
constexpr std::array<Algorithm, 5> kAlgorithms{{{"", HashAlgorithm::MD5, false},
                                                {"MD5", HashAlgorithm::MD5, false},
                                                {"MD5-sess", HashAlgorithm::MD5, true},
                                                {"SHA-256", HashAlgorithm::SHA256, false},
                                                {"SHA-256-sess", HashAlgorithm::SHA256, true}}};

bool ListHolds(std::string_view list, std::string_view word) {
  while (!list.empty()) {
    const std::string_view item = list.substr(0, list.find(','));
    list.remove_prefix(std::min(item.size() + 1, list.size()));
    if (EqualsIgnoringCase(util::Trimmed(item), word)) return true;
  }
  return false;
}

std::string Quoted(std::string_view text) {
  std::string quoted = "\"";
  for (const char character : text) {
    if (character == '"' || character == '\\') quoted += '\\';
    quoted += character;
  }
  return quoted += '"';
}

bool IsAscii(std::string_view text) {
  return std::all_of(text.begin(), text.end(),
                     [](char character) { return static_cast<unsigned char>(character) < 0x80; });
}

// RFC 8187.
std::string ExtendedValue(std::string_view text) {
  constexpr std::string_view kHexadecimal = "0123456789ABCDEF";
  constexpr std::string_view kPlain =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789!#$&+-.^_`|~";
  std::string value = "UTF-8''";
  for (const char character : text) {
    const auto byte = static_cast<unsigned char>(character);
    if (kPlain.find(character) != std::string_view::npos) {
      value += character;
    } else {
      value += {'%', kHexadecimal[byte >> 4], kHexadecimal[byte & 0xF]};
    }
  }
  return value;
}

std::string CountText(std::uint32_t count) {
  std::array<char, 9> text{};
  std::snprintf(text.data(), text.size(), "%08x", count);
  return text.data();
}

std::optional<CredentialWire::Secret> KeyHash(const DigestChallenge& challenge,
                                              const DigestRequest& request) {
  std::optional<CredentialWire::Secret> key =
      HexHash(challenge.algorithm, {request.userName, ":", challenge.realm, ":", request.password});
  if (!key || !challenge.isSession) return key;
  return HexHash(challenge.algorithm, {key->View(), ":", challenge.nonce, ":", request.clientNonce});
}

std::optional<CredentialWire::Secret> Response(const DigestChallenge& challenge,
                                               const DigestRequest& request) {
  const std::optional<CredentialWire::Secret> key = KeyHash(challenge, request);
  const std::optional<CredentialWire::Secret> message =
      HexHash(challenge.algorithm, {request.method, ":", request.target});
  if (!key || !message) return std::nullopt;
  if (!challenge.hasQop) {
    return HexHash(challenge.algorithm, {key->View(), ":", challenge.nonce, ":", message->View()});
  }
  return HexHash(challenge.algorithm, {key->View(), ":", challenge.nonce, ":", CountText(request.nonceCount),
                                       ":", request.clientNonce, ":auth:", message->View()});
}

std::string UserNameField(const DigestChallenge& challenge, std::string_view userName) {
  if (challenge.isUTF8 && !IsAscii(userName)) return "username*=" + ExtendedValue(userName);
  return "username=" + Quoted(userName);
}

}  // namespace

std::optional<DigestChallenge> DigestChallenge::From(const Challenge& challenge) {
  if (challenge.scheme != "digest" || challenge.Parameter("realm") == nullptr) return std::nullopt;
  DigestChallenge digest;
  digest.algorithmName = ValueOf(challenge, "algorithm");
  const auto known = std::find_if(
      kAlgorithms.begin(), kAlgorithms.end(),
      [&digest](const Algorithm& offered) { return EqualsIgnoringCase(offered.name, digest.algorithmName); });
  if (known == kAlgorithms.end()) return std::nullopt;
  digest.algorithm = known->hash;
  digest.isSession = known->isSession;
  digest.realm = ValueOf(challenge, "realm");
  digest.nonce = ValueOf(challenge, "nonce");
  if (const std::string* opaque = challenge.Parameter("opaque")) digest.opaque = *opaque;
  digest.isUTF8 = EqualsIgnoringCase(ValueOf(challenge, "charset"), "UTF-8");
  digest.isStale = EqualsIgnoringCase(ValueOf(challenge, "stale"), "true");
  digest.hasQop = ListHolds(ValueOf(challenge, "qop"), "auth");
  const bool offersOtherQop = challenge.Parameter("qop") != nullptr && !digest.hasQop;
  // A session's hash needs the client's nonce, which only goes with qop.
  const bool isComplete = !digest.nonce.empty() && (digest.hasQop || !digest.isSession);
  if (offersOtherQop || !isComplete) return std::nullopt;
  return digest;
}

std::optional<CredentialWire::Secret> DigestAnswer(const DigestChallenge& challenge,
                                                   const DigestRequest& request) {
  const std::optional<CredentialWire::Secret> response = Response(challenge, request);
  if (!response) return std::nullopt;
  CredentialWire::Secret value("Digest " + UserNameField(challenge, request.userName));
  value.Append(", realm=" + Quoted(challenge.realm) + ", nonce=" + Quoted(challenge.nonce));
  value.Append(", uri=" + Quoted(request.target) + ", response=\"");
  value.Append(response->View());
  value.Append("\"");
  if (!challenge.algorithmName.empty()) value.Append(", algorithm=" + challenge.algorithmName);
  if (challenge.opaque) value.Append(", opaque=" + Quoted(*challenge.opaque));
  if (challenge.hasQop) {
    value.Append(", qop=auth, nc=" + CountText(request.nonceCount) +
                 ", cnonce=" + Quoted(request.clientNonce));
  }
  return value;
}

}  // namespace Warden

#include "Url.h"

#include "SRLib/TextHelpers.h"

#include <algorithm>
#include <charconv>

namespace Warden {
namespace {

constexpr unsigned kLargestPort = 65535;

bool IsControl(char character) {
  const auto byte = static_cast<unsigned char>(character);
  return byte < 0x20 || byte == 0x7F;
}

// Where the port's colon stands, behind an IPv6 address in brackets.
std::size_t PortSeparator(std::string_view authority) {
  const std::size_t bracket = authority.rfind(']');
  const std::size_t colon = authority.rfind(':');
  const bool isPort =
      colon != std::string_view::npos && (bracket == std::string_view::npos || colon > bracket);
  return isPort ? colon : authority.size();
}

bool IsPort(std::string_view digits) {
  unsigned port = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), port);
  return error == std::errc() && end == digits.data() + digits.size() && port > 0 && port <= kLargestPort;
}

bool IsAuthority(std::string_view authority) {
  const std::size_t separator = PortSeparator(authority);
  if (separator == 0 || authority.find_first_of(" \\\"<>") != std::string_view::npos) return false;
  return separator == authority.size() || IsPort(authority.substr(separator + 1));
}

// What a request line may hold stays; the rest would be encoded on the way, and a digest made of the URL
// would be of another one.
std::string Encoded(std::string_view target) {
  constexpr std::string_view kHexadecimal = "0123456789ABCDEF";
  std::string encoded;
  for (const char character : target) {
    const auto byte = static_cast<unsigned char>(character);
    if (byte > 0x20 && byte < 0x7F) {
      encoded += character;
    } else {
      encoded += {'%', kHexadecimal[byte >> 4], kHexadecimal[byte & 0xF]};
    }
  }
  return encoded;
}

std::string TargetOf(std::string_view rest) {
  const std::string target = Encoded(rest.substr(0, rest.find('#')));
  return target.starts_with('/') ? target : "/" + target;
}

}  // namespace

std::optional<Url> Url::Parse(std::string_view text, std::string_view schemeWhenMissing) {
  if (std::any_of(text.begin(), text.end(), IsControl)) return std::nullopt;
  Url url;
  const std::size_t separator = text.find("://");
  const bool hasScheme = separator != std::string_view::npos && separator < text.find_first_of("/?#");
  url.scheme = hasScheme ? util::AsciiLowerCased(text.substr(0, separator)) : std::string(schemeWhenMissing);
  if (hasScheme) text.remove_prefix(separator + 3);
  if (url.scheme != "https" && url.scheme != "http") return std::nullopt;

  const std::size_t authorityEnd = std::min(text.find_first_of("/?#"), text.size());
  std::string_view authority = text.substr(0, authorityEnd);
  if (const std::size_t at = authority.rfind('@'); at != std::string_view::npos)
    authority.remove_prefix(at + 1);
  if (!IsAuthority(authority)) return std::nullopt;
  url.authority = authority;
  url.target = TargetOf(text.substr(authorityEnd));
  return url;
}

std::string Url::Host() const {
  std::string host = authority.substr(0, PortSeparator(authority));
  if (host.starts_with('[') && host.ends_with(']')) host = host.substr(1, host.size() - 2);
  return host;
}

std::string Url::ServerKey() const {
  const std::size_t separator = PortSeparator(authority);
  const std::string_view defaultPort = IsSecure() ? ":443" : ":80";
  const bool isDefault = std::string_view(authority).substr(separator) == defaultPort;
  return util::AsciiLowerCased(isDefault ? authority.substr(0, separator) : authority);
}

std::optional<Url> ThroughGateway(const Url& gateway, const Url& store) {
  if (gateway.target.find('?') != std::string::npos) return std::nullopt;
  Url url = gateway;
  while (url.target.ends_with('/')) url.target.pop_back();
  url.target += "/" + store.scheme + "/" + store.authority + store.target;
  return url;
}

}  // namespace Warden

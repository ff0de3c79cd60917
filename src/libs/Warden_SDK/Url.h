#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace Warden {

// An http or https URL in UTF-8, taken apart. User information and the fragment are left out.
struct Url {
  std::string scheme;     // lower case
  std::string authority;  // host[:port] as written
  std::string target;     // path and query, from '/' on, ASCII without blanks

  // `schemeWhenMissing` is taken for a text without "://". Nothing when it is no http or https URL, has no
  // host or no valid port, or holds control characters.
  [[nodiscard]] static std::optional<Url> Parse(std::string_view text, std::string_view schemeWhenMissing);

  [[nodiscard]] bool IsSecure() const { return scheme == "https"; }
  // Without the port, and without the brackets of an IPv6 address.
  [[nodiscard]] std::string Host() const;
  // host[:port] in lower case, the default port left out: names the server in a credential's key.
  [[nodiscard]] std::string ServerKey() const;
};

// The URL under which a gateway that rewrites hands out the store's: gateway/scheme/host[:port]/path. Nothing
// when the gateway's URL has a query.
[[nodiscard]] std::optional<Url> ThroughGateway(const Url& gateway, const Url& store);

}  // namespace Warden

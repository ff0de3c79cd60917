#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace Warden {

// An address in UTF-8, read as everybody reads it (libs/Address). The fragment is left out.
struct Url {
  std::string scheme;     // "http" or "https"
  std::string host;       // as written
  std::string authority;  // host[:port], the default port left out
  std::string target;     // path and query, from '/' on, ASCII without blanks

  // Nothing when nobody could be asked for it: no URL, or one that leads to another server than it shows.
  [[nodiscard]] static std::optional<Url> Parse(std::string_view text);

  [[nodiscard]] bool IsSecure() const { return scheme == "https"; }
  // Without the brackets of an IPv6 address.
  [[nodiscard]] std::string Host() const;
  // The authority in lower case: names the server in a credential's key.
  [[nodiscard]] std::string ServerKey() const;
};

// The URL under which a gateway that rewrites hands out the store's: gateway/scheme/host[:port]/path. Nothing
// when the gateway's URL has a query.
[[nodiscard]] std::optional<Url> ThroughGateway(const Url& gateway, const Url& store);

}  // namespace Warden

#pragma once

#include <optional>
#include <string>
#include <vector>

namespace Wayfinding {

// One URL under which a beacon may answer, in ASCII, without a fragment.
struct BeaconURL {
  std::string url;
  std::string host;  // lower case, without a dot at its end; a numeric IPv6 address without its brackets
  std::string port;
  bool secure = false;  // https
};

// Where a beacon is asked.
struct BeaconAddress {
  std::vector<BeaconURL> urls;  // to be tried in this order; one or two, all of the same host
  bool isLoopback = false;      // localhost, *.localhost, 127.0.0.0/8 or ::1
  bool isNumeric = false;       // needs no name lookup

  // Equal for addresses that are asked alike. Of a secure URL only host and port are ever used.
  [[nodiscard]] std::string Key() const;
};

// Reads a URL, whose scheme, host and port are those that all others read (libs/Address), or a host with an
// optional port (https, then http); UTF-8, white space around it is dropped. Nothing for any other text, for
// a URL that leads to another server than it shows or holds a user, and for an IPv6 address with a zone. Any
// thread.
[[nodiscard]] std::optional<BeaconAddress> ParseBeaconAddress(const std::string& text);

// The host, as in BeaconURL, of a URL of any scheme or of a reference relative to `baseURL`; empty when there
// is none.
[[nodiscard]] std::string HostOfReference(const std::string& reference, const std::string& baseURL);

// Whether a host, as in BeaconURL, is this machine's loopback.
[[nodiscard]] bool IsLoopbackHost(const std::string& host);

}  // namespace Wayfinding

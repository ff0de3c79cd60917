#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace Address {

// A URL (UTF-8) taken apart by simple text work: no percent-decoding, no user information, no validation.
// Whoever reads the scheme, host or port of an address reads them here.
struct SplitURL {
  explicit SplitURL(std::string_view url);

  [[nodiscard]] bool IsSecure() const { return protocol == "https"; }
  [[nodiscard]] std::string DefaultPort() const { return IsSecure() ? "443" : "80"; }
  // protocol://server[:port], the protocol's default port left out.
  [[nodiscard]] std::string WithoutPage() const;

  std::string protocol = "http";     // "http" or "https"
  std::string server = "No Server";  // as written
  std::string port;                  // as written, the default one where none is; empty for a colon alone
  std::optional<std::string> page;   // behind the first slash of the address; nothing without a slash
};

}  // namespace Address

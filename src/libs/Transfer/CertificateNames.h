#pragma once

#include "libs/Transfer/OpenSslHandles.h"

#include <optional>
#include <string>
#include <vector>

// The names in an X.509 certificate, which must not be null. All text is UTF-8; what the certificate does not
// have is nothing. Any thread.
namespace Transfer::CertificateNames {

[[nodiscard]] std::optional<std::string> CommonName(const X509* certificate);
// The subject's organisation, or its common name when it has none.
[[nodiscard]] std::optional<std::string> Organization(const X509* certificate);
// The issuer's organisation, or its common name when it has none.
[[nodiscard]] std::optional<std::string> Issuer(const X509* certificate);
// The host names of the subject's alternative names, in their order.
[[nodiscard]] std::vector<std::string> Hosts(const X509* certificate);
// The IP addresses among them, as text ("192.0.2.1", "2001:db8::1").
[[nodiscard]] std::vector<std::string> Addresses(const X509* certificate);

}  // namespace Transfer::CertificateNames

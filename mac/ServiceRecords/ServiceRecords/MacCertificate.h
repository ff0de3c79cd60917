#pragma once

#include "libs/Transfer/OpenSslHandles.h"

#include <optional>
#include <string>
#include <vector>

// The names in one X.509 certificate. Immutable, holds the certificate as a further owner; any thread. All
// text is UTF-8; what the certificate does not have is nothing.
class MacCertificate {
 public:
  // `certificate` must not be null.
  [[nodiscard]] static MacCertificate certificateWithCertificateRef(X509* certificate);

  [[nodiscard]] std::optional<std::string> commonName() const;
  // The subject's organisation, or its common name when it has none.
  [[nodiscard]] std::optional<std::string> organizationName() const;
  // The issuer's organisation, or its common name when it has none.
  [[nodiscard]] std::optional<std::string> issuerName() const;
  // The host names of the subject's alternative names, in their order.
  [[nodiscard]] std::vector<std::string> dnsNames() const;
  // Whether organizationName equals issuerName. Deliberately a comparison of names: no signature is checked.
  [[nodiscard]] bool isSelfSigned() const;
  // For the log. The opening bracket has no closing one, deliberately.
  [[nodiscard]] std::string description() const;

 private:
  explicit MacCertificate(Transfer::X509Ptr certificate) : certificateRef_(std::move(certificate)) {}

  Transfer::X509Ptr certificateRef_;
};

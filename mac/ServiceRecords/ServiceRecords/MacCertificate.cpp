#include "MacCertificate.h"

#include "libs/Transfer/CertificateNames.h"

#include <fmt/format.h>

namespace {

constexpr const char* kMissing = "(nil)";

std::string List(const std::vector<std::string>& items) {
  return items.empty() ? kMissing : fmt::format("({})", fmt::join(items, ", "));
}

}  // namespace

MacCertificate MacCertificate::certificateWithCertificateRef(X509* certificate) {
  return MacCertificate(Transfer::Retain(certificate));
}

std::optional<std::string> MacCertificate::commonName() const {
  return Transfer::CertificateNames::CommonName(certificateRef_.get());
}

std::optional<std::string> MacCertificate::organizationName() const {
  return Transfer::CertificateNames::Organization(certificateRef_.get());
}

std::optional<std::string> MacCertificate::issuerName() const {
  return Transfer::CertificateNames::Issuer(certificateRef_.get());
}

std::vector<std::string> MacCertificate::dnsNames() const {
  return Transfer::CertificateNames::Hosts(certificateRef_.get());
}

bool MacCertificate::isSelfSigned() const {
  return organizationName() == issuerName();
}

std::string MacCertificate::description() const {
  const std::string values = fmt::format(
      "{{certificateRef = {}; commonName = {}; issuerName = {}; organizationName = {}; dnsNames = {}; "
      "isSelfSigned = {}}}",
      fmt::ptr(certificateRef_.get()), commonName().value_or(kMissing), issuerName().value_or(kMissing),
      organizationName().value_or(kMissing), List(dnsNames()), isSelfSigned() ? "YES" : "NO");
  return fmt::format("<MacCertificate: {}, {}", fmt::ptr(this), values);
}

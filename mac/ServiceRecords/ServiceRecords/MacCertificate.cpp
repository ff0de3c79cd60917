#include "MacCertificate.h"

#include <fmt/format.h>

#include <utility>

namespace {

constexpr const char* kMissing = "(nil)";

std::optional<std::string> Text(const ASN1_STRING* value) {
  unsigned char* bytes = nullptr;
  const int length = ASN1_STRING_to_UTF8(&bytes, value);
  if (length < 0) return std::nullopt;
  const OpenSslBytesPtr owned(bytes);
  return std::string(bytes, bytes + length);
}

// The value of the first entry of that attribute.
std::optional<std::string> Attribute(const X509_NAME* name, int attribute) {
  const int index = X509_NAME_get_index_by_NID(name, attribute, -1);
  if (index < 0) return std::nullopt;
  return Text(X509_NAME_ENTRY_get_data(X509_NAME_get_entry(name, index)));
}

std::optional<std::string> OrganizationOrCommonName(const X509_NAME* name) {
  std::optional<std::string> organization = Attribute(name, NID_organizationName);
  return organization ? organization : Attribute(name, NID_commonName);
}

std::string List(const std::vector<std::string>& items) {
  return items.empty() ? kMissing : fmt::format("({})", fmt::join(items, ", "));
}

}  // namespace

MacCertificate MacCertificate::certificateWithCertificateRef(X509* certificate) {
  return MacCertificate(Retain(certificate));
}

std::optional<std::string> MacCertificate::commonName() const {
  return Attribute(X509_get_subject_name(certificateRef_.get()), NID_commonName);
}

std::optional<std::string> MacCertificate::organizationName() const {
  return OrganizationOrCommonName(X509_get_subject_name(certificateRef_.get()));
}

std::optional<std::string> MacCertificate::issuerName() const {
  return OrganizationOrCommonName(X509_get_issuer_name(certificateRef_.get()));
}

std::vector<std::string> MacCertificate::dnsNames() const {
  const GeneralNamesPtr names(static_cast<GENERAL_NAMES*>(
      X509_get_ext_d2i(certificateRef_.get(), NID_subject_alt_name, nullptr, nullptr)));
  std::vector<std::string> hosts;
  for (int i = 0; i < sk_GENERAL_NAME_num(names.get()); ++i) {
    const GENERAL_NAME* const name = sk_GENERAL_NAME_value(names.get(), i);
    if (name->type != GEN_DNS) continue;
    if (std::optional<std::string> host = Text(name->d.dNSName)) hosts.push_back(*std::move(host));
  }
  return hosts;
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

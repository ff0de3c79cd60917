#include "libs/Transfer/CertificateNames.h"

#include <utility>

namespace Transfer::CertificateNames {
namespace {

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

}  // namespace

std::optional<std::string> CommonName(const X509* certificate) {
  return Attribute(X509_get_subject_name(certificate), NID_commonName);
}

std::optional<std::string> Organization(const X509* certificate) {
  return OrganizationOrCommonName(X509_get_subject_name(certificate));
}

std::optional<std::string> Issuer(const X509* certificate) {
  return OrganizationOrCommonName(X509_get_issuer_name(certificate));
}

std::vector<std::string> Hosts(const X509* certificate) {
  const GeneralNamesPtr names(
      static_cast<GENERAL_NAMES*>(X509_get_ext_d2i(certificate, NID_subject_alt_name, nullptr, nullptr)));
  std::vector<std::string> hosts;
  for (int i = 0; i < sk_GENERAL_NAME_num(names.get()); ++i) {
    const GENERAL_NAME* const name = sk_GENERAL_NAME_value(names.get(), i);
    if (name->type != GEN_DNS) continue;
    if (std::optional<std::string> host = Text(name->d.dNSName)) hosts.push_back(*std::move(host));
  }
  return hosts;
}

}  // namespace Transfer::CertificateNames

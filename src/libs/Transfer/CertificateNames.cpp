#include "libs/Transfer/CertificateNames.h"

#include <arpa/inet.h>

#include <array>
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

// One of a length that no address has is none.
std::optional<std::string> AddressText(const ASN1_OCTET_STRING* address) {
  constexpr int kLengthOfIPv4 = 4;
  constexpr int kLengthOfIPv6 = 16;
  const int length = ASN1_STRING_length(address);
  if (length != kLengthOfIPv4 && length != kLengthOfIPv6) return std::nullopt;
  std::array<char, INET6_ADDRSTRLEN> text{};
  const int family = length == kLengthOfIPv4 ? AF_INET : AF_INET6;
  return ::inet_ntop(family, ASN1_STRING_get0_data(address), text.data(), text.size());
}

// What `textOf` makes of each of the subject's alternative names.
template <class TextOf>
std::vector<std::string> AlternativeNames(const X509* certificate, TextOf textOf) {
  const GeneralNamesPtr names(
      static_cast<GENERAL_NAMES*>(X509_get_ext_d2i(certificate, NID_subject_alt_name, nullptr, nullptr)));
  std::vector<std::string> texts;
  for (int i = 0; i < sk_GENERAL_NAME_num(names.get()); ++i) {
    std::optional<std::string> text = textOf(sk_GENERAL_NAME_value(names.get(), i));
    if (text) texts.push_back(*std::move(text));
  }
  return texts;
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
  return AlternativeNames(certificate, [](const GENERAL_NAME* name) {
    return name->type == GEN_DNS ? Text(name->d.dNSName) : std::nullopt;
  });
}

std::vector<std::string> Addresses(const X509* certificate) {
  return AlternativeNames(certificate, [](const GENERAL_NAME* name) {
    return name->type == GEN_IPADD ? AddressText(name->d.iPAddress) : std::nullopt;
  });
}

}  // namespace Transfer::CertificateNames

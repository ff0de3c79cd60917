#include "MacCertificate.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

struct Entry {
  const char* attribute;
  std::string value;
  int encoding = MBSTRING_UTF8;
};

void SetName(X509_NAME* name, const std::vector<Entry>& entries) {
  for (const Entry& entry : entries) {
    const auto* const bytes = reinterpret_cast<const unsigned char*>(entry.value.data());
    X509_NAME_add_entry_by_txt(name, entry.attribute, entry.encoding, bytes,
                               static_cast<int>(entry.value.size()), -1, 0);
  }
}

MacCertificate Certificate(const std::vector<Entry>& subject, const std::vector<Entry>& issuer,
                           const char* alternativeNames = nullptr) {
  const Transfer::X509Ptr certificate(X509_new());
  SetName(X509_get_subject_name(certificate.get()), subject);
  SetName(X509_get_issuer_name(certificate.get()), issuer);
  if (alternativeNames != nullptr) {
    X509_EXTENSION* const extension =
        X509V3_EXT_conf_nid(nullptr, nullptr, NID_subject_alt_name, alternativeNames);
    X509_add_ext(certificate.get(), extension, -1);
    X509_EXTENSION_free(extension);
  }
  return MacCertificate::certificateWithCertificateRef(certificate.get());
}

TEST(MacCertificate, GivesTheNamesOfSubjectAndIssuer) {
  const MacCertificate certificate = Certificate({{"O", "Example Stores"}, {"CN", "stores.example"}},
                                                 {{"O", "Example Authority"}, {"CN", "Root"}});
  EXPECT_EQ(certificate.commonName(), "stores.example");
  EXPECT_EQ(certificate.organizationName(), "Example Stores");
  EXPECT_EQ(certificate.issuerName(), "Example Authority");
}

TEST(MacCertificate, FallsBackToCommonNames) {
  const MacCertificate certificate = Certificate({{"CN", "stores.example"}}, {{"CN", "Root"}});
  EXPECT_EQ(certificate.organizationName(), "stores.example");
  EXPECT_EQ(certificate.issuerName(), "Root");
}

TEST(MacCertificate, HasNoNamesWhereTheCertificateHasNone) {
  const MacCertificate certificate = Certificate({}, {{"C", "CH"}});
  EXPECT_EQ(certificate.commonName(), std::nullopt);
  EXPECT_EQ(certificate.organizationName(), std::nullopt);
  EXPECT_EQ(certificate.issuerName(), std::nullopt);
  EXPECT_THAT(certificate.dnsNames(), IsEmpty());
}

TEST(MacCertificate, TakesTheFirstOfSeveralOrganisations) {
  EXPECT_EQ(Certificate({{"O", "First"}, {"O", "Second"}}, {}).organizationName(), "First");
}

TEST(MacCertificate, GivesNamesOfEveryEncodingInUTF8) {
  EXPECT_EQ(Certificate({{"O", "Z\xC3\xBCrich \xE2\x82\xAC"}}, {}).organizationName(),
            "Z\xC3\xBCrich \xE2\x82\xAC");
  EXPECT_EQ(Certificate({{"O", "Z\xFCrich", V_ASN1_T61STRING}}, {}).organizationName(), "Z\xC3\xBCrich");
  EXPECT_EQ(Certificate({{"O", std::string("\0Z\0\xFC", 4), V_ASN1_BMPSTRING}}, {}).organizationName(),
            "Z\xC3\xBC");
}

TEST(MacCertificate, ListsOnlyTheHostNamesAmongTheAlternativeNames) {
  const MacCertificate certificate =
      Certificate({}, {}, "DNS:b.example,IP:127.0.0.1,DNS:*.a.example,email:someone@b.example");
  EXPECT_THAT(certificate.dnsNames(), ElementsAre("b.example", "*.a.example"));
}

TEST(MacCertificate, IsSelfSignedWhenItsNamesAreEqualWhoeverSignedIt) {
  EXPECT_TRUE(Certificate({{"O", "Same"}, {"CN", "server"}}, {{"O", "Same"}, {"CN", "Root"}}).isSelfSigned());
  EXPECT_TRUE(Certificate({{"O", "Same"}}, {{"CN", "Same"}}).isSelfSigned());
  EXPECT_FALSE(Certificate({{"O", "One"}, {"CN", "Same"}}, {{"O", "Other"}, {"CN", "Same"}}).isSelfSigned());
}

TEST(MacCertificate, DescribesItselfWithoutAClosingBracket) {
  const MacCertificate certificate = Certificate({{"O", "Example Stores"}}, {{"CN", "Root"}}, "DNS:a,DNS:b");
  const std::string description = certificate.description();
  EXPECT_THAT(description, StartsWith("<MacCertificate: 0x"));
  EXPECT_THAT(description,
              HasSubstr("commonName = (nil); issuerName = Root; organizationName = Example Stores; "
                        "dnsNames = (a, b); isSelfSigned = NO"));
  EXPECT_THAT(description, EndsWith("}"));
}

TEST(MacCertificate, DescribesMissingValuesAsNil) {
  EXPECT_THAT(Certificate({}, {}).description(),
              HasSubstr("commonName = (nil); issuerName = (nil); organizationName = (nil); dnsNames = (nil); "
                        "isSelfSigned = YES"));
}

}  // namespace

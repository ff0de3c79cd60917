#include "SRLib/Platform/SSLValidationDetails.h"
#include "SRLib/SSLValidation.h"
#include "core/CoreTest.h"
#include "fakes/StubMessages.h"

namespace {

using namespace ServiceRecords;
using namespace TestSupport;

// Notes what it was given and answers as told.
class StubValidation : public SSLValidation {
 public:
  StubValidation(const std::wstring& url, bool answer) : SSLValidation(url, StubMessage), answer_(answer) {}

  bool PerformValidation(SSLValidationDetails& details) override {
    performed = true;
    startedFresh = details.Organization.empty() && details.Issuer.empty() && details.Errors.empty() &&
                   details.Result == SSLValidationDetails::kSuccess;
    details.Issuer = L"found out";
    return answer_;
  }

  bool performed = false;
  bool startedFresh = false;

 private:
  const bool answer_;
};

class SSLValidationTest : public CoreTest {
 protected:
  static SSLValidationDetails Used() {
    SSLValidationDetails details;
    details.Organization = L"old";
    details.Issuer = L"old";
    details.AddError(L"old");
    details.Result = SSLValidationDetails::kCertificatesNotFetched;
    return details;
  }
};

TEST_F(SSLValidationTest, DetailsStartEmptyAndCanBeReset) {
  SSLValidationDetails details;
  EXPECT_EQ(details.Result, 0U);
  details = Used();
  details.AddError(L"second");
  EXPECT_EQ(details.Errors, (std::vector<std::wstring>{L"old", L"second"}));
  details.Reset();
  EXPECT_EQ(details.Organization, L"");
  EXPECT_EQ(details.Issuer, L"");
  EXPECT_TRUE(details.Errors.empty());
  EXPECT_EQ(details.Result, SSLValidationDetails::kSuccess);
}

TEST_F(SSLValidationTest, TheResultCodesStayWhatTheyAre) {
  EXPECT_EQ(SSLValidationDetails::kServerNotContacted, 1U);
  EXPECT_EQ(SSLValidationDetails::kCertificatesNotFetched, 2U);
  EXPECT_EQ(SSLValidationDetails::kUserDoesNotTrustServer, 3U);
}

TEST_F(SSLValidationTest, AValidationStartsWithFreshDetailsAndPassesItsAnswerOn) {
  for (const bool answer : {true, false}) {
    SSLValidationDetails details = Used();
    StubValidation validation(L"https://h/page", answer);
    EXPECT_EQ(validation.ValidateURL(details), answer);
    EXPECT_TRUE(validation.startedFresh);
    EXPECT_EQ(details.Issuer, L"found out");
  }
  EXPECT_EQ(trace_.Records(), Records{});
}

TEST_F(SSLValidationTest, APlainConnectionIsWarnedAboutAndValidatedAllTheSame) {
  SSLValidationDetails details;
  StubValidation validation(L"http://h:8080/page", true);
  EXPECT_TRUE(validation.ValidateURL(details));
  EXPECT_TRUE(validation.performed);
  EXPECT_EQ(
      trace_.Records(),
      (Records{{0, kSSLValidationFile,
                "Warning: HTTP connection requested for SSL validation with http://h:8080/page server."}}));
}

TEST_F(SSLValidationTest, AUrlWithoutAServerIsValidatedUnderTheStandInName) {
  SSLValidationDetails details;
  StubValidation validation(L"", true);
  EXPECT_TRUE(validation.ValidateURL(details));
  EXPECT_EQ(
      trace_.Records(),
      (Records{
          {0, kSSLValidationFile,
           "Warning: HTTP connection requested for SSL validation with http://No Server/No Page server."}}));
}

}  // namespace

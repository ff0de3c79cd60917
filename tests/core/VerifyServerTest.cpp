#include "SRLib/Platform/SSLValidationDetails.h"
#include "core/ProviderTest.h"

namespace {

using namespace ServiceRecords;
using namespace std::string_literals;
using namespace TestSupport;
using ::testing::Return;
using Labels = std::vector<GatewayLabel>;

class VerifyServerTest : public ProviderTest {
 protected:
  bool Verify(SRStore store, const std::wstring& url) {
    trace_.Clear();
    return provider_.VerifyServer(store, url, L"https://not-used", details_);
  }

  // The flow's own records; choosing the default gateway leaves some more.
  Records FlowRecords() {
    Records records = trace_.Records();
    std::erase_if(records, [](const TraceRecord& record) { return record.file != kProviderFile; });
    return records;
  }

  const SRStore store_ =
      Store(L"s", L"https://s",
            {Gateway(L"A", L"https://a"), Gateway(L"B", L"https://b", true), Gateway(L"C", L"https://c")});
  SSLValidationDetails details_;
};

TEST_F(VerifyServerTest, ATrustedServerIsShownToTheUserWithTheStoreAndItsGateways) {
  validations_.Answer(L"https://b", SSLOutcome::Trusted(L"Organization", L"Issuer"));
  EXPECT_CALL(notifications_, ShowTrustDialog(L"Issuer"s, L"Organization"s, L"Name of s"s, L"https://s"s,
                                              GatewayLabel(L"B"s, L"https://b"s),
                                              Labels{{L"A"s, L"https://a"s}, {L"C"s, L"https://c"s}}))
      .WillOnce(Return(100));
  EXPECT_TRUE(Verify(store_, L"https://b"));
  EXPECT_EQ(details_.Result, SSLValidationDetails::kSuccess);
  EXPECT_TRUE(details_.Errors.empty());
  EXPECT_EQ(FlowRecords(), (Records{{0, kProviderFile, ".......Validation for server: https://b"},
                                    {0, kProviderFile, "........-> success"}}));
}

TEST_F(VerifyServerTest, TheUserIsAskedBetweenTheRecordOfTheValidationAndThatOfItsEnd) {
  validations_.Answer(L"https://s", SSLOutcome::Trusted(L"O", L"I"));
  Records whenAsked;
  EXPECT_CALL(notifications_, ShowTrustDialog)
      .WillOnce(::testing::DoAll([&] { whenAsked = FlowRecords(); }, Return(100)));
  EXPECT_TRUE(Verify(Store(L"s", L"https://s"), L"https://s"));
  EXPECT_EQ(whenAsked, (Records{{0, kProviderFile, ".......Validation for server: https://s"}}));
}

TEST_F(VerifyServerTest, TheGivenUrlAloneIsValidated) {
  EXPECT_FALSE(Verify(store_, L"https://elsewhere"));
  EXPECT_EQ(validations_.Validated(), (Wide{L"https://elsewhere"}));
}

TEST_F(VerifyServerTest, AStoreWithoutGatewaysIsShownWithEmptyLabels) {
  validations_.Answer(L"https://s", SSLOutcome::Trusted(L"O", L"I"));
  EXPECT_CALL(notifications_,
              ShowTrustDialog(L"I"s, L"O"s, L"Name of s"s, L"https://s"s, GatewayLabel(L""s, L""s), Labels{}))
      .WillOnce(Return(100));
  EXPECT_TRUE(Verify(Store(L"s", L"https://s"), L"https://s"));
}

TEST_F(VerifyServerTest, AnyOtherAnswerThanAcceptanceIsNoTrust) {
  validations_.Answer(L"https://b", SSLOutcome::Trusted(L"O", L"I"));
  for (const std::int32_t answer : {0, -1, 1, 99, 101}) {
    EXPECT_CALL(notifications_, ShowTrustDialog).WillOnce(Return(answer)).RetiresOnSaturation();
    EXPECT_FALSE(Verify(store_, L"https://b"));
    EXPECT_EQ(details_.Result, SSLValidationDetails::kUserDoesNotTrustServer);
    EXPECT_EQ(FlowRecords(), (Records{{0, kProviderFile, ".......Validation for server: https://b"},
                                      {0, kProviderFile, "........-> user doesn't trust the server"}}));
  }
}

TEST_F(VerifyServerTest, AFailedValidationLeavesItsDetailsAndShowsNoDialog) {
  validations_.Answer(L"https://b",
                      SSLOutcome::Failed(SSLValidationDetails::kCertificatesNotFetched, {L"why"}));
  EXPECT_FALSE(Verify(store_, L"https://b"));
  EXPECT_EQ(details_.Result, SSLValidationDetails::kCertificatesNotFetched);
  EXPECT_EQ(details_.Errors, (Wide{L"why"}));
  EXPECT_EQ(trace_.Records(), (Records{{0, kProviderFile, ".......Validation for server: https://b"},
                                       {0, kProviderFile, "........-> SSL validation failure"}}));
}

TEST_F(VerifyServerTest, APlainUrlIsWarnedAboutAfterTheFlowsFirstRecord) {
  EXPECT_FALSE(Verify(store_, L"http://b"));
  ASSERT_EQ(trace_.Records().size(), 3U);
  EXPECT_EQ(
      trace_.Records()[1],
      (TraceRecord{0, kSSLValidationFile,
                   "Warning: HTTP connection requested for SSL validation with http://b/No Page server."}));
}

}  // namespace

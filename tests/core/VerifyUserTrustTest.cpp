#include "SRLib/Platform/SSLValidationDetails.h"
#include "core/ProviderTest.h"

namespace {

using namespace ServiceRecords;
using namespace std::string_literals;
using namespace TestSupport;
using ::testing::Return;

class VerifyUserTrustTest : public ProviderTest {
 protected:
  VerifyUserTrustTest() {
    trusted_ = SSLOutcome::Trusted(L"O", L"I");
    notContacted_ = SSLOutcome::Failed(SSLValidationDetails::kServerNotContacted, {L"not reached"});
    notFetched_ = SSLOutcome::Failed(SSLValidationDetails::kCertificatesNotFetched, {L"first", L"second"});
  }

  bool Trusts(SRStore store) { return provider_.VerifyUserTrust(store); }

  const SRStore withGateway_ = Store(L"s", L"https://s", {Gateway(L"GW", L"https://gw")});
  const SRStore withoutGateway_ = Store(L"s", L"https://s");
  SSLOutcome trusted_;
  SSLOutcome notContacted_;
  SSLOutcome notFetched_;
};

TEST_F(VerifyUserTrustTest, ATrustedGatewayIsEnough) {
  validations_.Answer(L"https://gw", trusted_);
  EXPECT_CALL(notifications_, ShowTrustDialog).WillOnce(Return(100));
  EXPECT_TRUE(Trusts(withGateway_));
  EXPECT_EQ(validations_.Validated(), (Wide{L"https://gw"}));
}

TEST_F(VerifyUserTrustTest, TheDefaultGatewayIsTheOneThatIsAsked) {
  validations_.Answer(L"https://b", trusted_);
  EXPECT_CALL(notifications_, ShowTrustDialog).WillOnce(Return(100));
  EXPECT_TRUE(
      Trusts(Store(L"s", L"https://s", {Gateway(L"A", L"https://a"), Gateway(L"B", L"https://b", true)})));
  EXPECT_EQ(validations_.Validated(), (Wide{L"https://b"}));
}

TEST_F(VerifyUserTrustTest, TheStoresAddressStandsInForAGatewayThatIsNotReached) {
  validations_.Answer(L"https://gw", notContacted_);
  validations_.Answer(L"https://s", trusted_);
  EXPECT_CALL(notifications_, ShowTrustDialog).WillOnce(Return(100));
  EXPECT_TRUE(Trusts(withGateway_));
  EXPECT_EQ(validations_.Validated(), (Wide{L"https://gw", L"https://s"}));
}

TEST_F(VerifyUserTrustTest, AStoreWithoutGatewaysIsReachedThroughItsOwnAddress) {
  validations_.Answer(L"https://s", trusted_);
  EXPECT_CALL(notifications_, ShowTrustDialog).WillOnce(Return(100));
  EXPECT_TRUE(Trusts(withoutGateway_));
  EXPECT_EQ(validations_.Validated(), (Wide{L"https://s"}));
}

TEST_F(VerifyUserTrustTest, AGatewayThatFailsValidationIsNotRetriedAndEachMessageEndsInABlank) {
  validations_.Answer(L"https://gw", notFetched_);
  validations_.Answer(L"https://s", trusted_);
  EXPECT_CALL(notifications_, ShowSRErrorDialog(L"message 1600"s, L"first second "s));
  EXPECT_FALSE(Trusts(withGateway_));
  EXPECT_EQ(validations_.Validated(), (Wide{L"https://gw"}));
}

TEST_F(VerifyUserTrustTest, AGatewayThatTheUserDeclinesIsNotRetriedAndShowsNoError) {
  validations_.Answer(L"https://gw", trusted_);
  validations_.Answer(L"https://s", trusted_);
  EXPECT_CALL(notifications_, ShowTrustDialog).WillOnce(Return(0));
  EXPECT_FALSE(Trusts(withGateway_));
  EXPECT_EQ(validations_.Validated(), (Wide{L"https://gw"}));
}

TEST_F(VerifyUserTrustTest, TheMessagesOfTheStoresAddressReplaceThoseOfTheGateway) {
  validations_.Answer(L"https://gw", notContacted_);
  validations_.Answer(L"https://s", notFetched_);
  EXPECT_CALL(notifications_, ShowSRErrorDialog(L"message 1600"s, L"first second "s));
  EXPECT_FALSE(Trusts(withGateway_));
}

TEST_F(VerifyUserTrustTest, AStoreThatIsNotReachedEitherWayShowsOneError) {
  EXPECT_CALL(notifications_, ShowSRErrorDialog(L"message 1600"s, L"no answer "s));
  EXPECT_FALSE(Trusts(withGateway_));
  EXPECT_EQ(validations_.Validated(), (Wide{L"https://gw", L"https://s"}));
}

TEST_F(VerifyUserTrustTest, TheUserDecliningTheStoresAddressShowsNoError) {
  validations_.Answer(L"https://gw", notContacted_);
  validations_.Answer(L"https://s", trusted_);
  EXPECT_CALL(notifications_, ShowTrustDialog).WillOnce(Return(-1));
  EXPECT_FALSE(Trusts(withGateway_));
}

TEST_F(VerifyUserTrustTest, ValidationAndDialogsAreOutsideTheLock) {
  validations_.Answer(L"https://gw", notContacted_);
  validations_.Answer(L"https://s", trusted_);
  bool inside = true;
  EXPECT_CALL(notifications_, ShowTrustDialog)
      .WillOnce(::testing::DoAll([&inside] { inside = InsideCriticalSection(); }, Return(100)));
  EXPECT_TRUE(Trusts(withGateway_));
  EXPECT_FALSE(inside);
  EXPECT_FALSE(validations_.ValidatedInsideCriticalSection());
}

}  // namespace

#include "libs/Transfer/StreamErrorCode.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

namespace {

using Transfer::StreamErrorCode::FromTransfer;
using Transfer::StreamErrorCode::IsTlsFailure;

TEST(StreamErrorCode, CountsBothEdgesOfTheRangeAsTlsFailures) {
  EXPECT_TRUE(IsTlsFailure(-9849));
  EXPECT_TRUE(IsTlsFailure(-9800));
}

TEST(StreamErrorCode, CountsAnAddressOfAnotherServerAsATlsFailure) {
  EXPECT_TRUE(IsTlsFailure(Transfer::StreamErrorCode::kAnotherServer));
}

TEST(StreamErrorCode, CountsNothingOutsideTheRangeAsATlsFailure) {
  EXPECT_FALSE(IsTlsFailure(-9850));
  EXPECT_FALSE(IsTlsFailure(-9799));
  EXPECT_FALSE(IsTlsFailure(Transfer::StreamErrorCode::kNone));
  EXPECT_FALSE(IsTlsFailure(std::numeric_limits<std::int64_t>::min()));
  EXPECT_FALSE(IsTlsFailure(std::numeric_limits<std::int64_t>::max()));
}

TEST(StreamErrorCode, PutsEveryFailureOfTheHandshakeIntoTheRange) {
  for (const CURLcode result : {CURLE_SSL_CONNECT_ERROR, CURLE_PEER_FAILED_VERIFICATION,
                                CURLE_SSL_CACERT_BADFILE, CURLE_SSL_CERTPROBLEM, CURLE_SSL_CIPHER,
                                CURLE_SSL_ISSUER_ERROR, CURLE_SSL_INVALIDCERTSTATUS, CURLE_SSL_CLIENTCERT}) {
    EXPECT_TRUE(IsTlsFailure(FromTransfer(result, false))) << result;
  }
}

TEST(StreamErrorCode, TellsTheReasonsOfAHandshakeFailureApart) {
  EXPECT_NE(FromTransfer(CURLE_PEER_FAILED_VERIFICATION, false),
            FromTransfer(CURLE_SSL_CONNECT_ERROR, false));
  EXPECT_NE(FromTransfer(CURLE_PEER_FAILED_VERIFICATION, false),
            FromTransfer(CURLE_SSL_CACERT_BADFILE, false));
}

TEST(StreamErrorCode, KeepsTransportFailuresOutsideTheRange) {
  for (const CURLcode result : {CURLE_COULDNT_CONNECT, CURLE_COULDNT_RESOLVE_HOST, CURLE_OPERATION_TIMEDOUT,
                                CURLE_GOT_NOTHING, CURLE_RECV_ERROR, CURLE_ABORTED_BY_CALLBACK}) {
    EXPECT_EQ(FromTransfer(result, false), result);
    EXPECT_FALSE(IsTlsFailure(FromTransfer(result, false))) << result;
  }
}

TEST(StreamErrorCode, CountsAReadThatAFatalAlertEndedAsATlsFailure) {
  EXPECT_TRUE(IsTlsFailure(FromTransfer(CURLE_RECV_ERROR, true)));
}

TEST(StreamErrorCode, IsNoneForATransferThatEndedWell) {
  EXPECT_EQ(FromTransfer(CURLE_OK, false), 0);
}

}  // namespace

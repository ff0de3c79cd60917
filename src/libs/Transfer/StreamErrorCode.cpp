#include "libs/Transfer/StreamErrorCode.h"

namespace Transfer::StreamErrorCode {

bool IsTlsFailure(std::int64_t errorCode) {
  // One unsigned comparison: what lies below the range wraps around to far above it.
  constexpr std::uint64_t kWidth = kLast - kFirst;
  return static_cast<std::uint64_t>(errorCode) - static_cast<std::uint64_t>(kFirst) <= kWidth;
}

std::int64_t FromTransfer(CURLcode result, bool receivedFatalAlert) {
  switch (result) {
    case CURLE_OK:
      return kNone;
    case CURLE_SSL_CONNECT_ERROR:
      return kProtocolMismatch;
    case CURLE_SSL_CIPHER:
      return kNegotiationFailed;
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_SSL_ISSUER_ERROR:
    case CURLE_SSL_INVALIDCERTSTATUS:
      return kChainInvalid;
    case CURLE_SSL_CACERT_BADFILE:
      return kNoRootCertificates;
    case CURLE_SSL_CERTPROBLEM:
    case CURLE_SSL_CLIENTCERT:
      return kClientCertificateUnusable;
    default:
      return receivedFatalAlert ? kFatalAlert : static_cast<std::int64_t>(result);
  }
}

}  // namespace Transfer::StreamErrorCode

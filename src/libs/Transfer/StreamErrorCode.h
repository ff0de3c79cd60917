#pragma once

#include "libs/Transfer/CurlHandle.h"

#include <cstdint>

// The error codes of a validation's stream. Those of TLS lie together in one range, kFirst to kLast; a
// transport failure keeps libcurl's own number, which is positive.
namespace Transfer::StreamErrorCode {

inline constexpr std::int64_t kFirst = -9849;
inline constexpr std::int64_t kLast = -9800;

inline constexpr std::int64_t kNone = 0;
inline constexpr std::int64_t kProtocolMismatch = -9800;
inline constexpr std::int64_t kNegotiationFailed = -9801;
inline constexpr std::int64_t kFatalAlert = -9802;
inline constexpr std::int64_t kChainInvalid = -9807;
inline constexpr std::int64_t kNoRootCertificates = -9813;
inline constexpr std::int64_t kClientCertificateUnusable = -9825;
// The address is read as another server's than the one that would be shown; nothing was contacted.
inline constexpr std::int64_t kAnotherServer = -9843;

// Whether the code lies in the TLS range, kFirst to kLast inclusive.
[[nodiscard]] bool IsTlsFailure(std::int64_t errorCode);

// The code of a transfer that ended with `result`. `receivedFatalAlert`: the peer ended the TLS session with
// an alert, which a transfer past its handshake only knows as an error in reading.
[[nodiscard]] std::int64_t FromTransfer(CURLcode result, bool receivedFatalAlert);

}  // namespace Transfer::StreamErrorCode

#pragma once

#include "CurlHandle.h"

#include <optional>
#include <string>

// What every transfer of this program shares: http and https only, 30 s to connect, 60 s without progress,
// servers verified against the system's trust store (SSL_CERT_FILE and SSL_CERT_DIR replace it), proxies from
// the environment, an early end when termination is requested. Any thread.
namespace CurlTransfer {

// The address (UTF-8) in the form in which it is requested: blanks and characters outside ASCII
// percent-encoded, a host name outside ASCII in its ASCII form, no user and no password; path and query
// otherwise as they stand, dots in the path included. Nothing when it is no URL.
[[nodiscard]] std::optional<std::string> RequestForm(const std::string& address);

// A transfer of that URL, ready for further options. Null when the library or memory for one is not to be
// had.
[[nodiscard]] CurlPtr Make(const std::string& requestForm);

// Loads the system's trust store into an SSL_CTX. Make() has it done; who sets CURLOPT_SSL_CTX_FUNCTION anew
// calls it from there.
[[nodiscard]] CURLcode UseSystemTrust(void* context);

}  // namespace CurlTransfer

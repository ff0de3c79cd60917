#pragma once

#include "libs/Transfer/CurlTransfer.h"

#include <array>
#include <memory>
#include <string>
#include <utility>

namespace Transfer {

// A HEAD request to a server itself, without redirects, whose handshake gives the chain that the system
// trusts. One thread.
class HeadRequest {
 public:
  // `url` is the text of an Address::SendingForm. Null when the library or memory is not to be had.
  [[nodiscard]] static std::unique_ptr<HeadRequest> Make(const std::string& url);

  // Blocks until the response or a time-out.
  [[nodiscard]] CURLcode Perform() { return result_ = transfer_->Perform(); }

  // Why the request failed, in libcurl's words; empty where it has none.
  [[nodiscard]] const char* Reason() const { return reason_.data(); }
  // The chain of the server that responded, its certificate first, the root last; borrowed. Null without TLS
  // to the server itself, and where a stapled answer says that its certificate is revoked.
  [[nodiscard]] const STACK_OF(X509) * TrustedChain() const;

  // Why the server that was asked is not trusted.
  [[nodiscard]] PeerProblem Problem() const;

  [[nodiscard]] const CurlTransfer& Transfer() const { return *transfer_; }

 private:
  explicit HeadRequest(std::unique_ptr<CurlTransfer> transfer) : transfer_(std::move(transfer)) {}

  CURLcode result_ = CURLE_OK;
  std::array<char, CURL_ERROR_SIZE> reason_{};
  std::unique_ptr<CurlTransfer> transfer_;
};

}  // namespace Transfer

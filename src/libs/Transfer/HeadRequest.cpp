#include "libs/Transfer/HeadRequest.h"

#include "libs/Transfer/StreamErrorCode.h"

namespace Transfer {
namespace {

std::size_t DiscardBytes(char* /*bytes*/, std::size_t size, std::size_t count, void* /*user*/) {
  return size * count;
}

}  // namespace

std::unique_ptr<HeadRequest> HeadRequest::Make(const std::string& url) {
  std::unique_ptr<CurlTransfer> transfer = CurlTransfer::Make(url);
  if (!transfer) return nullptr;
  std::unique_ptr<HeadRequest> request(new HeadRequest(std::move(transfer)));
  CURL* const handle = request->Transfer().Handle();
  curl_easy_setopt(handle, CURLOPT_NOBODY, 1L);
  curl_easy_setopt(handle, CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
  curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, DiscardBytes);
  curl_easy_setopt(handle, CURLOPT_ERRORBUFFER, request->reason_.data());
  return request;
}

PeerProblem HeadRequest::Problem() const {
  const bool isRefused = StreamErrorCode::FromTransfer(result_, false) == StreamErrorCode::kChainInvalid;
  if (!transfer_->IsSecure() || (result_ != CURLE_OK && !isRefused && result_ != CURLE_SSL_CONNECT_ERROR))
    return {};
  return transfer_->Trust().Problem(!isRefused);
}

const STACK_OF(X509) * HeadRequest::TrustedChain() const {
  // Without TLS to the server itself, a chain can only be a proxy's.
  const bool isTrusted = transfer_->IsSecure() && transfer_->Trust().Evaluate();
  return isTrusted ? transfer_->Trust().Chain() : nullptr;
}

}  // namespace Transfer

#include "libs/Transfer/GetRequest.h"

#include "libs/Transfer/HeaderList.h"

#include <string_view>

namespace Transfer {
namespace {

constexpr long kMaximumRedirects = 20;
constexpr long kFirstErrorStatus = 400;

// Nothing is sent to a server that a validation would not trust, and no redirect leads from https to http.
int BeforeRequest(void* user, char* /*peerAddress*/, char* /*ownAddress*/, int /*peerPort*/,
                  int /*ownPort*/) noexcept {
  const auto& transfer = *static_cast<const CurlTransfer*>(user);
  if (!transfer.IsSecure()) return CURL_PREREQFUNC_OK;
  curl_easy_setopt(transfer.Handle(), CURLOPT_REDIR_PROTOCOLS_STR, "https");
  return transfer.Trust().Evaluate() ? CURL_PREREQFUNC_OK : CURL_PREREQFUNC_ABORT;
}

// Some releases of libcurl leave the line's CR in a value that is empty otherwise.
std::string_view WithoutLineEnd(std::string_view value) {
  return value.substr(0, value.find_last_not_of("\r\n") + 1);
}

}  // namespace

std::unique_ptr<GetRequest> GetRequest::Make(const std::string& url, const TransferLimits& limits) {
  std::unique_ptr<CurlTransfer> transfer = CurlTransfer::Make(url, limits);
  if (!transfer) return nullptr;
  std::unique_ptr<GetRequest> request(new GetRequest(std::move(transfer)));
  if (!request->AddHeader("Accept: text/xml,application/xml")) return nullptr;
  CURL* const handle = request->transfer_->Handle();
  curl_easy_setopt(handle, CURLOPT_HTTPGET, 1L);
  curl_easy_setopt(handle, CURLOPT_HEADEROPT, CURLHEADER_SEPARATE);
  curl_easy_setopt(handle, CURLOPT_FOLLOWLOCATION, 1L);
  curl_easy_setopt(handle, CURLOPT_MAXREDIRS, kMaximumRedirects);
  curl_easy_setopt(handle, CURLOPT_PREREQFUNCTION, BeforeRequest);
  curl_easy_setopt(handle, CURLOPT_PREREQDATA, request->transfer_.get());
  curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, CollectBody);
  curl_easy_setopt(handle, CURLOPT_WRITEDATA, request.get());
  return request;
}

bool GetRequest::AddHeader(std::string line) {
  return AppendHeader(headers_, std::move(line));
}

long GetRequest::Perform() {
  curl_easy_setopt(transfer_->Handle(), CURLOPT_HTTPHEADER, headers_.get());
  const bool complete = transfer_->Perform() == CURLE_OK;
  const long status = transfer_->Status();
  return complete || (status >= kFirstErrorStatus && transfer_->HasHeader()) ? status : 0;
}

std::string GetRequest::HeaderLines() const {
  constexpr int kLastResponse = -1;
  std::string lines;
  curl_header* field = nullptr;
  while ((field = curl_easy_nextheader(transfer_->Handle(), CURLH_HEADER, kLastResponse, field)) != nullptr) {
    lines.append(field->name).append(": ").append(WithoutLineEnd(field->value)).append("\r\n");
  }
  return lines;
}

std::string GetRequest::RedirectedURL() const {
  return transfer_->RedirectCount() == 0 ? "" : transfer_->EffectiveURL();
}

// libcurl takes any other count than the given one as the order to end the transfer.
std::size_t GetRequest::CollectBody(char* bytes, std::size_t /*one*/, std::size_t count,
                                    void* self) noexcept {
  auto& request = *static_cast<GetRequest*>(self);
  if (request.transfer_->Status() != kOK) return count;
  try {
    request.body_.append(bytes, count);
  } catch (...) {
    return CURL_WRITEFUNC_ERROR;
  }
  return count;
}

}  // namespace Transfer

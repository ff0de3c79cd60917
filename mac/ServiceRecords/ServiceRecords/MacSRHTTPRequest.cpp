#include "MacSRHTTPRequest.h"

#include "DbgTrace.h"
#include "Network/RequestHeaders.h"
#include "libs/Address/SendingForm.h"
#include "libs/Text/TextHelpers.h"
#include "libs/Transfer/CurlTransfer.h"

#include <memory>
#include <optional>
#include <string_view>

namespace ServiceRecords {
namespace {

constexpr long kMaximumRedirects = 20;
constexpr long kStatusOK = 200;
constexpr long kFirstErrorStatus = 400;

// The body of a 200 that the request receives.
struct Reception {
  const CurlTransfer* request = nullptr;
  std::string body;
};

// libcurl takes any other count than the given one as the order to end the transfer.
std::size_t CollectBody(char* bytes, std::size_t /*one*/, std::size_t count, void* user) noexcept {
  auto& reception = *static_cast<Reception*>(user);
  if (reception.request->Status() != kStatusOK) return count;
  try {
    reception.body.append(bytes, count);
  } catch (...) {
    return CURL_WRITEFUNC_ERROR;
  }
  return count;
}

// Nothing is sent to a server that a validation would not trust, and no redirect leads from https to http.
int BeforeRequest(void* user, char* /*peerAddress*/, char* /*ownAddress*/, int /*peerPort*/,
                  int /*ownPort*/) noexcept {
  const auto& request = *static_cast<const CurlTransfer*>(user);
  if (!request.IsSecure()) return CURL_PREREQFUNC_OK;
  curl_easy_setopt(request.Handle(), CURLOPT_REDIR_PROTOCOLS_STR, "https");
  return request.Trust().Evaluate() ? CURL_PREREQFUNC_OK : CURL_PREREQFUNC_ABORT;
}

// `headers` and `reception` must outlive the request.
std::unique_ptr<CurlTransfer> MakeGet(const std::string& url, const TransferLimits& limits,
                                      const CurlListPtr& headers, Reception& reception) {
  std::unique_ptr<CurlTransfer> request = CurlTransfer::Make(url, limits);
  if (!request) return nullptr;
  reception.request = request.get();
  CURL* const handle = request->Handle();
  curl_easy_setopt(handle, CURLOPT_HTTPGET, 1L);
  curl_easy_setopt(handle, CURLOPT_HEADEROPT, CURLHEADER_SEPARATE);
  curl_easy_setopt(handle, CURLOPT_HTTPHEADER, headers.get());
  curl_easy_setopt(handle, CURLOPT_FOLLOWLOCATION, 1L);
  curl_easy_setopt(handle, CURLOPT_MAXREDIRS, kMaximumRedirects);
  curl_easy_setopt(handle, CURLOPT_PREREQFUNCTION, BeforeRequest);
  curl_easy_setopt(handle, CURLOPT_PREREQDATA, request.get());
  curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, CollectBody);
  curl_easy_setopt(handle, CURLOPT_WRITEDATA, &reception);
  return request;
}

// The status of the response, 0 without one. The status line of a transfer that broke off says nothing about
// the document, but an error with its header is one however much of its body arrives.
long Perform(CurlTransfer& request) {
  const bool complete = request.Perform() == CURLE_OK;
  const long status = request.Status();
  return complete || (status >= kFirstErrorStatus && request.HasHeader()) ? status : 0;
}

// Some releases of libcurl leave the line's CR in a value that is empty otherwise.
std::string_view WithoutLineEnd(std::string_view value) {
  return value.substr(0, value.find_last_not_of("\r\n") + 1);
}

// The last response's header fields; those of the redirects before it are not asked for.
std::wstring HeaderLines(CURL* request) {
  constexpr int kLastResponse = -1;
  std::string lines;
  curl_header* field = nullptr;
  while ((field = curl_easy_nextheader(request, CURLH_HEADER, kLastResponse, field)) != nullptr) {
    lines.append(field->name).append(": ").append(WithoutLineEnd(field->value)).append("\r\n");
  }
  return util::widen(lines);
}

// Where the last response came from; empty when no redirect was followed. A redirect to the server itself
// names it as `pagelessURL` does, not in the ASCII form of its name in which it was requested.
std::wstring RedirectedURL(CURL* request, std::string_view sentURL, const std::string& pagelessURL) {
  long redirects = 0;
  const char* url = nullptr;
  curl_easy_getinfo(request, CURLINFO_REDIRECT_COUNT, &redirects);
  curl_easy_getinfo(request, CURLINFO_EFFECTIVE_URL, &url);
  if (redirects == 0 || url == nullptr) return {};
  const std::string_view effective = url;
  const std::string_view server = sentURL.substr(0, sentURL.find('/', sentURL.find("://") + 3) + 1);
  if (!effective.starts_with(server)) return util::widen(effective);
  return util::widen(pagelessURL) + L"/" + util::widen(effective.substr(server.size()));
}

bool Failed() {
  CSRLog(2, "Retrieving discovery document failed");
  return false;
}

}  // namespace

bool MacSRHTTPRequest::SendHTTPRequest(const std::wstring& extraHeaders) {
  body_.clear();
  rawHeader_.clear();
  redirectedURL_.clear();
  const std::string& address = url_.GetURL();
  const Address::SendingForm form = FormForSending(url_.GetSplitURL(), address);
  if (form.reading != Address::Reading::Same) {
    CSRLog(2, "The URL passed to SendHTTPRequest was malformed (URL = %@)", address);
    return Failed();
  }
  const CurlListPtr headers = RequestHeaders(extraHeaders);
  Reception reception;
  std::unique_ptr<CurlTransfer> request;
  if (headers) request = MakeGet(form.text, limits_, headers, reception);
  if (!request) {
    CSRLog(2, "Failed to create urlRequest in SendHTTPRequest (URL = %@)", address);
    return Failed();
  }
  status_ = Perform(*request);
  if (status_ != 0) redirectedURL_ = RedirectedURL(request->Handle(), form.text, url_.GetPagelessURL());
  if (status_ == kStatusOK && util::IsUTF8(reception.body)) {
    body_ = util::widen(reception.body);
    return true;
  }
  if (status_ != 0) rawHeader_ = HeaderLines(request->Handle());
  return Failed();
}

void MacSRHTTPRequestFactory::Init() {
  static MacSRHTTPRequestFactory factory;
  c_Instance = &factory;
}

std::unique_ptr<SRHTTPRequest> MacSRHTTPRequestFactory::Create(const std::wstring& url) {
  return std::make_unique<MacSRHTTPRequest>(url);
}

}  // namespace ServiceRecords

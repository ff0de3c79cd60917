#include "MacSRHTTPRequest.h"

#include "DbgTrace.h"
#include "Network/RequestHeaders.h"
#include "libs/Address/SendingForm.h"
#include "libs/Text/TextHelpers.h"
#include "libs/Transfer/GetRequest.h"

#include <memory>
#include <string_view>

namespace ServiceRecords {
namespace {

// Null without memory.
std::unique_ptr<Transfer::GetRequest> MakeGet(const std::string& url, const Transfer::TransferLimits& limits,
                                              const std::wstring& extraHeaders) {
  std::unique_ptr<Transfer::GetRequest> request = Transfer::GetRequest::Make(url, limits);
  return request && Agent::AddHeaders(*request, extraHeaders) ? std::move(request) : nullptr;
}

// A redirect to the server itself names it as `pagelessURL` does, not in the ASCII form of its name in which
// it was requested.
std::wstring AsWritten(std::string_view redirectedURL, std::string_view sentURL,
                       const std::string& pagelessURL) {
  const std::string_view server = sentURL.substr(0, sentURL.find('/', sentURL.find("://") + 3) + 1);
  if (!redirectedURL.starts_with(server)) return util::widen(redirectedURL);
  return util::widen(pagelessURL) + L"/" + util::widen(redirectedURL.substr(server.size()));
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
  const std::unique_ptr<Transfer::GetRequest> request = MakeGet(form.text, limits_, extraHeaders);
  if (!request) {
    CSRLog(2, "Failed to create urlRequest in SendHTTPRequest (URL = %@)", address);
    return Failed();
  }
  status_ = request->Perform();
  if (status_ != 0) redirectedURL_ = AsWritten(request->RedirectedURL(), form.text, url_.GetPagelessURL());
  if (status_ == Transfer::GetRequest::kOK && util::IsUTF8(request->Body())) {
    body_ = util::widen(request->Body());
    return true;
  }
  if (status_ != 0) rawHeader_ = util::widen(request->HeaderLines());
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

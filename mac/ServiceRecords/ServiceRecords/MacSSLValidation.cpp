#include "MacSSLValidation.h"

#include "DbgTrace.h"
#include "SRLib/Platform/Messages.h"
#include "SRLib/Platform/SSLValidationDetails.h"
#include "libs/Address/SendingForm.h"
#include "libs/Text/TextHelpers.h"
#include "libs/Transfer/CurlTransfer.h"
#include "libs/Transfer/StreamErrorCode.h"

#include <array>
#include <cassert>
#include <memory>

namespace ServiceRecords {
namespace {

std::size_t DiscardBytes(char* /*bytes*/, std::size_t size, std::size_t count, void* /*user*/) {
  return size * count;
}

// `reason` (CURL_ERROR_SIZE characters) must outlive the stream.
std::unique_ptr<CurlTransfer> MakeHead(const std::string& url, char* reason) {
  std::unique_ptr<CurlTransfer> stream = CurlTransfer::Make(url);
  if (!stream) return nullptr;
  CURL* const handle = stream->Handle();
  curl_easy_setopt(handle, CURLOPT_NOBODY, 1L);
  curl_easy_setopt(handle, CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
  curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, DiscardBytes);
  curl_easy_setopt(handle, CURLOPT_ERRORBUFFER, reason);
  return stream;
}

}  // namespace

bool MacSSLValidation::PerformValidation(SSLValidationDetails& details) {
  assert(!downloading_);
  certificates_.clear();
  errorCode_ = StreamErrorCode::kNone;
  const Address::SendingForm form = FormForSending(url_.GetSplitURL(), url_.GetPagelessURL());
  if (form.reading == Address::Reading::Same) DownloadHead(form.text);
  // Another server than the one to be shown: none of the store's other addresses may step in for that.
  if (form.reading == Address::Reading::Other) errorCode_ = StreamErrorCode::kAnotherServer;
  if (certificates_.empty()) {
    ReportFailure(errorCode_, details);
    return false;
  }
  details.Organization = util::widen(certificates_.front().organizationName().value_or(""));
  details.Issuer = util::widen(certificates_.back().issuerName().value_or(""));
  return true;
}

void MacSSLValidation::DownloadHead(const std::string& url) {
  std::array<char, CURL_ERROR_SIZE> reason{};
  const std::unique_ptr<CurlTransfer> stream = MakeHead(url, reason.data());
  if (!stream) return;
  downloading_ = true;
  const CURLcode result = stream->Perform();
  if (result == CURLE_OK) {
    // Without TLS to the server itself, a chain can only be a proxy's.
    if (url_.IsSecure()) TakePeerTrust(stream->Trust());
  } else {
    ReportReadError(result, stream->Trust().ReceivedFatalAlert(), reason.data());
  }
  downloading_ = false;
}

void MacSSLValidation::TakePeerTrust(const PeerTrust& trust) {
  if (!trust.Evaluate()) return;
  for (int i = 0; i < sk_X509_num(trust.Chain()); ++i) {
    certificates_.push_back(MacCertificate::certificateWithCertificateRef(sk_X509_value(trust.Chain(), i)));
  }
}

void MacSSLValidation::ReportReadError(CURLcode result, bool receivedFatalAlert, const std::string& reason) {
  errorCode_ = StreamErrorCode::FromTransfer(result, receivedFatalAlert);
  CSRLog(2, "Read Stream failed with %@",
         reason.empty() ? "error number: " + std::to_string(errorCode_) : reason);
}

void MacSSLValidation::ReportFailure(std::int64_t errorCode, SSLValidationDetails& details) const {
  const std::string address = url_.GetPagelessURL();
  if (StreamErrorCode::IsTlsFailure(errorCode)) {
    CSRLog(2, "Could not fetch certificates for URL %@", address);
    details.Result = SSLValidationDetails::kCertificatesNotFetched;
    details.AddError(util::MessageWithArgument(util::kMessageCertificatesNotFetched, url_.GetServer()));
  } else {
    CSRLog(2, "Failed to contact URL  %@", address);
    details.Result = SSLValidationDetails::kServerNotContacted;
    details.AddError(util::MessageWithArgument(util::kMessageServerNotContacted, url_.GetDisplayURL()));
  }
}

void MacSSLValidationFactory::Init() {
  static MacSSLValidationFactory factory;
  c_Instance = &factory;
}

std::unique_ptr<SSLValidation> MacSSLValidationFactory::Create(const std::wstring& url) {
  return std::make_unique<MacSSLValidation>(url);
}

}  // namespace ServiceRecords

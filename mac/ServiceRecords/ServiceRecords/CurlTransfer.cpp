#include "CurlTransfer.h"

#include "OpenSslHandles.h"
#include "TerminationEvent.h"

namespace CurlTransfer {
namespace {

constexpr long kConnectSeconds = 30;
constexpr long kSecondsWithoutProgress = 60;
constexpr long kLeastBytesPerSecond = 1;

bool LibraryIsReady() {
  static const bool ready = curl_global_init(CURL_GLOBAL_DEFAULT) == CURLE_OK;
  return ready;
}

int EndOnTermination(void* transfer, curl_off_t /*downloadTotal*/, curl_off_t /*downloaded*/,
                     curl_off_t /*uploadTotal*/, curl_off_t /*uploaded*/) {
  if (!TerminationEvent::Requested()) return 0;
  // A name lookup that hangs must not hold up the end of the process.
  curl_easy_setopt(static_cast<CURL*>(transfer), CURLOPT_QUICK_EXIT, 1L);
  return 1;
}

CURLcode PrepareContext(CURL* /*transfer*/, void* context, void* /*user*/) {
  return UseSystemTrust(context);
}

void SetTrust(CURL* transfer) {
  // The paths built into libcurl would be used in place of the variables that the user may have set.
  curl_easy_setopt(transfer, CURLOPT_CAINFO, nullptr);
  curl_easy_setopt(transfer, CURLOPT_CAPATH, nullptr);
  curl_easy_setopt(transfer, CURLOPT_SSL_CTX_FUNCTION, PrepareContext);
}

void SetLimits(CURL* transfer) {
  curl_easy_setopt(transfer, CURLOPT_PROTOCOLS_STR, "http,https");
  curl_easy_setopt(transfer, CURLOPT_REDIR_PROTOCOLS_STR, "http,https");
  curl_easy_setopt(transfer, CURLOPT_CONNECTTIMEOUT, kConnectSeconds);
  curl_easy_setopt(transfer, CURLOPT_LOW_SPEED_TIME, kSecondsWithoutProgress);
  curl_easy_setopt(transfer, CURLOPT_LOW_SPEED_LIMIT, kLeastBytesPerSecond);
}

}  // namespace

CURLcode UseSystemTrust(void* context) {
  const bool loaded = SSL_CTX_set_default_verify_paths(static_cast<SSL_CTX*>(context)) == 1;
  return loaded ? CURLE_OK : CURLE_SSL_CACERT_BADFILE;
}

std::optional<std::string> RequestForm(const std::string& address) {
  if (!LibraryIsReady()) return std::nullopt;
  const CurlUrlPtr url(curl_url());
  constexpr unsigned int kEncode = CURLU_ALLOW_SPACE | CURLU_URLENCODE;
  if (!url || curl_url_set(url.get(), CURLUPART_URL, address.c_str(), kEncode) != CURLUE_OK)
    return std::nullopt;
  char* text = nullptr;
  if (curl_url_get(url.get(), CURLUPART_URL, &text, 0) != CURLUE_OK) return std::nullopt;
  const CurlTextPtr owned(text);
  return std::string(text);
}

CurlPtr Make(const std::string& requestForm) {
  if (!LibraryIsReady()) return nullptr;
  CurlPtr transfer(curl_easy_init());
  if (!transfer) return nullptr;
  CURL* const handle = transfer.get();
  if (curl_easy_setopt(handle, CURLOPT_URL, requestForm.c_str()) != CURLE_OK) return nullptr;
  curl_easy_setopt(handle, CURLOPT_NOSIGNAL, 1L);
  curl_easy_setopt(handle, CURLOPT_NOPROGRESS, 0L);
  curl_easy_setopt(handle, CURLOPT_XFERINFOFUNCTION, EndOnTermination);
  curl_easy_setopt(handle, CURLOPT_XFERINFODATA, handle);
  SetLimits(handle);
  SetTrust(handle);
  return transfer;
}

}  // namespace CurlTransfer

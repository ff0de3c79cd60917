#include "libs/Transfer/CurlTransfer.h"

#include "libs/Termination/TerminationEvent.h"

#include <string_view>

namespace Transfer {
namespace {

constexpr long kConnectSeconds = 30;
constexpr long kFirstFinalStatus = 200;

bool LibraryIsReady() {
  static const bool ready = curl_global_init(CURL_GLOBAL_DEFAULT) == CURLE_OK;
  return ready;
}

bool UseSystemTrust(SSL_CTX* context) {
  return SSL_CTX_set_default_verify_paths(context) == 1;
}

}  // namespace

std::unique_ptr<CurlTransfer> CurlTransfer::Make(const std::string& url, const TransferLimits& limits) {
  std::unique_ptr<CurlTransfer> transfer(new CurlTransfer(limits));
  return LibraryIsReady() && transfer->Prepare(url) ? std::move(transfer) : nullptr;
}

bool CurlTransfer::Prepare(const std::string& url) {
  handle_.reset(curl_easy_init());
  CURL* const handle = Handle();
  if (handle == nullptr || curl_easy_setopt(handle, CURLOPT_URL, url.c_str()) != CURLE_OK) return false;
  curl_easy_setopt(handle, CURLOPT_PATH_AS_IS, 1L);
  curl_easy_setopt(handle, CURLOPT_DISALLOW_USERNAME_IN_URL, 1L);
  curl_easy_setopt(handle, CURLOPT_PROTOCOLS_STR, "http,https");
  curl_easy_setopt(handle, CURLOPT_REDIR_PROTOCOLS_STR, "http,https");
  curl_easy_setopt(handle, CURLOPT_CONNECTTIMEOUT, kConnectSeconds);
  curl_easy_setopt(handle, CURLOPT_NOSIGNAL, 1L);
  // A name lookup that hangs must not hold up the end of a transfer.
  curl_easy_setopt(handle, CURLOPT_QUICK_EXIT, 1L);
  // The paths built into libcurl would be used in place of the variables that the user may have set.
  curl_easy_setopt(handle, CURLOPT_CAINFO, nullptr);
  curl_easy_setopt(handle, CURLOPT_CAPATH, nullptr);
  // A resumed session has no verified chain.
  curl_easy_setopt(handle, CURLOPT_SSL_SESSIONID_CACHE, 0L);
  curl_easy_setopt(handle, CURLOPT_SSL_CTX_FUNCTION, PrepareContext);
  curl_easy_setopt(handle, CURLOPT_SSL_CTX_DATA, this);
  curl_easy_setopt(handle, CURLOPT_HEADERFUNCTION, TakeHeader);
  curl_easy_setopt(handle, CURLOPT_HEADERDATA, this);
  curl_easy_setopt(handle, CURLOPT_NOPROGRESS, 0L);
  curl_easy_setopt(handle, CURLOPT_XFERINFOFUNCTION, Progress);
  curl_easy_setopt(handle, CURLOPT_XFERINFODATA, this);
  return true;
}

CURLcode CurlTransfer::Perform() {
  watch_ = TransferWatch(limits_, std::chrono::steady_clock::now());
  return curl_easy_perform(Handle());
}

long CurlTransfer::Status() const {
  long status = 0;
  curl_easy_getinfo(Handle(), CURLINFO_RESPONSE_CODE, &status);
  return status;
}

long CurlTransfer::RedirectCount() const {
  long count = 0;
  curl_easy_getinfo(Handle(), CURLINFO_REDIRECT_COUNT, &count);
  return count;
}

bool CurlTransfer::HasHeader() const {
  return headersOfRedirect_ == RedirectCount();
}

std::string CurlTransfer::EffectiveURL() const {
  const char* url = nullptr;
  curl_easy_getinfo(Handle(), CURLINFO_EFFECTIVE_URL, &url);
  return url == nullptr ? "" : url;
}

bool CurlTransfer::IsSecure() const {
  return EffectiveURL().starts_with("https:");
}

CURLcode CurlTransfer::PrepareContext(CURL* /*handle*/, void* context, void* self) noexcept {
  auto* const sessions = static_cast<SSL_CTX*>(context);
  static_cast<CurlTransfer*>(self)->trust_.Watch(sessions);
  return UseSystemTrust(sessions) ? CURLE_OK : CURLE_SSL_CACERT_BADFILE;
}

// libcurl takes any other size than the given one as the order to end the transfer.
std::size_t CurlTransfer::TakeHeader(char* line, std::size_t /*one*/, std::size_t size, void* self) noexcept {
  auto& transfer = *static_cast<CurlTransfer*>(self);
  if (!transfer.watch_.TakeHeader(std::chrono::steady_clock::now(), size)) return CURL_WRITEFUNC_ERROR;
  const std::string_view text(line, size);
  const bool isLast = text == "\r\n" || text == "\n";
  if (isLast && transfer.Status() >= kFirstFinalStatus)
    transfer.headersOfRedirect_ = transfer.RedirectCount();
  return size;
}

int CurlTransfer::Progress(void* self, curl_off_t /*downloadTotal*/, curl_off_t downloaded,
                           curl_off_t /*uploadTotal*/, curl_off_t /*uploaded*/) noexcept {
  auto& transfer = *static_cast<CurlTransfer*>(self);
  if (Termination::Requested()) return 1;
  std::optional<std::uint64_t> bodyBytes;
  if (transfer.HasHeader()) bodyBytes = static_cast<std::uint64_t>(downloaded);
  try {
    return transfer.watch_.Continues(std::chrono::steady_clock::now(), bodyBytes) ? 0 : 1;
  } catch (...) {
    return 1;
  }
}

}  // namespace Transfer

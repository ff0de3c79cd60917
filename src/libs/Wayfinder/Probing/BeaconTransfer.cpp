#include "libs/Wayfinder/Probing/BeaconTransfer.h"

#include "libs/Wayfinder/Probing/BeaconAddress.h"
#include "libs/Wayfinder/Probing/TlsTrust.h"
#include "libs/Wording/Message.h"

#include <new>

namespace Wayfinding {

using Wording::Message;
using Wording::Worded;

namespace {

constexpr std::size_t kMostHeadBytes = 256 * 1024;
constexpr long kNetworkAuthenticationRequired = 511;

// libcurl's own form for addresses that it need not look up.
WFCurlListPtr KnownAddresses(const BeaconURL& url, const std::vector<std::string>& addresses) {
  if (addresses.empty()) return nullptr;
  std::string entry = "+" + url.host + ":" + url.port;
  char separator = ':';
  for (const std::string& address : addresses) {
    const bool six = address.find(':') != std::string::npos;
    entry += separator + (six ? "[" + address + "]" : address);
    separator = ',';
  }
  WFCurlListPtr list(curl_slist_append(nullptr, entry.c_str()));
  if (list == nullptr) throw std::bad_alloc();  // libcurl would look the name up by itself
  return list;
}

bool NeedsTarget(long status) {
  return status == 301 || status == 302 || status == 303 || status == 307 || status == 308;
}

Message StatusWords(long status) {
  return Worded("status {status}", {{"status", std::to_string(status)}});
}

// The commonest in libcurl's words, so that they can be shown in other languages.
Message FailureOf(CURLcode code) {
  switch (code) {
    case CURLE_COULDNT_CONNECT:
      return Worded("Could not connect to server");
    case CURLE_OPERATION_TIMEDOUT:
      return Worded("Timeout was reached");
    case CURLE_PEER_FAILED_VERIFICATION:
      return Worded("SSL peer certificate or SSH remote key was not OK");
    case CURLE_SSL_CONNECT_ERROR:
      return Worded("SSL connect error");
    case CURLE_GOT_NOTHING:
      return Worded("Server returned nothing (no headers, no data)");
    case CURLE_RECV_ERROR:
      return Worded("Failure when receiving data from the peer");
    default:
      return curl_easy_strerror(code);
  }
}

}  // namespace

BeaconTransfer::BeaconTransfer(CURLM* transfers, TlsTrust& trust, const BeaconURL& url, Method method,
                               const std::vector<std::string>& addresses, std::chrono::milliseconds limit)
    : transfers_(transfers),
      trust_(trust),
      secure_(url.secure),
      method_(method),
      host_(url.host),
      url_(url.url),
      addresses_(KnownAddresses(url, addresses)),
      transfer_(curl_easy_init()) {
  CURL* const handle = transfer_.get();
  if (handle == nullptr || curl_easy_setopt(handle, CURLOPT_URL, url_.c_str()) != CURLE_OK)
    throw std::bad_alloc();
  curl_easy_setopt(handle, CURLOPT_RESOLVE, addresses_.get());
  curl_easy_setopt(handle, CURLOPT_QUICK_EXIT, 1L);
  curl_easy_setopt(handle, CURLOPT_PROTOCOLS_STR, "http,https");
  curl_easy_setopt(handle, CURLOPT_NOSIGNAL, 1L);
  curl_easy_setopt(handle, CURLOPT_PROXY, "");
  curl_easy_setopt(handle, CURLOPT_FRESH_CONNECT, 1L);
  curl_easy_setopt(handle, CURLOPT_FORBID_REUSE, 1L);
  curl_easy_setopt(handle, CURLOPT_FOLLOWLOCATION, 0L);
  curl_easy_setopt(handle, CURLOPT_TIMEOUT_MS, static_cast<long>(limit.count()));
  curl_easy_setopt(handle, secure_ ? CURLOPT_CONNECT_ONLY : CURLOPT_NOBODY,
                   secure_ || method_ == Method::Head ? 1L : 0L);
  curl_easy_setopt(handle, CURLOPT_HEADERFUNCTION, TakeHeader);
  curl_easy_setopt(handle, CURLOPT_HEADERDATA, this);
  curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, TakeBody);
  curl_easy_setopt(handle, CURLOPT_WRITEDATA, this);
  if (secure_) SetTrust();
  if (curl_multi_add_handle(transfers_, handle) != CURLM_OK) throw std::bad_alloc();
}

BeaconTransfer::~BeaconTransfer() {
  curl_multi_remove_handle(transfers_, transfer_.get());
}

void BeaconTransfer::SetTrust() {
  CURL* const handle = transfer_.get();
  // The paths built into libcurl would be used in place of the variables that the user may have set.
  curl_easy_setopt(handle, CURLOPT_CAINFO, nullptr);
  curl_easy_setopt(handle, CURLOPT_CAPATH, nullptr);
  // Who verified is known by the chain, which a resumed session does not have.
  curl_easy_setopt(handle, CURLOPT_CERTINFO, 1L);
  curl_easy_setopt(handle, CURLOPT_SSL_SESSIONID_CACHE, 0L);
  curl_easy_setopt(handle, CURLOPT_SSL_CTX_FUNCTION, PrepareContext);
  curl_easy_setopt(handle, CURLOPT_SSL_CTX_DATA, this);
  sockets_.Watch(handle);
}

CURLcode BeaconTransfer::PrepareContext(CURL* /*transfer*/, void* context, void* self) {
  auto& transfer = *static_cast<BeaconTransfer*>(self);
  transfer.sockets_.NoteConnected();
  return transfer.trust_.Prepare(context) ? CURLE_OK : CURLE_SSL_CACERT_BADFILE;
}

std::size_t BeaconTransfer::TakeHeader(char* /*data*/, std::size_t size, std::size_t count, void* self) {
  auto& transfer = *static_cast<BeaconTransfer*>(self);
  transfer.headBytes_ += size * count;
  return transfer.headBytes_ <= kMostHeadBytes ? size * count : 0;
}

// The head says all; the rest need not come.
std::size_t BeaconTransfer::TakeBody(char* /*data*/, std::size_t /*size*/, std::size_t /*count*/,
                                     void* self) {
  static_cast<BeaconTransfer*>(self)->bodyBegan_ = true;
  return 0;
}

long BeaconTransfer::Status() const {
  long status = 0;
  curl_easy_getinfo(transfer_.get(), CURLINFO_RESPONSE_CODE, &status);
  return status;
}

std::string BeaconTransfer::Peer() const {
  if (secure_) return sockets_.ConnectedAddress();
  const char* address = nullptr;
  curl_easy_getinfo(transfer_.get(), CURLINFO_PRIMARY_IP, &address);
  return address == nullptr ? std::string() : std::string(address);
}

std::string BeaconTransfer::HeardFrom(CURLcode code) const {
  switch (code) {
    case CURLE_OK:
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_UNSUPPORTED_PROTOCOL:  // a body without a head
    case CURLE_WEIRD_SERVER_REPLY:
      return Peer();
    default:
      return headBytes_ > 0 ? Peer() : std::string();
  }
}

// libcurl's own word for it would be missing when the body was not taken.
std::optional<std::string> BeaconTransfer::RedirectHost() const {
  if (Status() / 100 != 3) return std::nullopt;
  curl_header* location = nullptr;
  if (curl_easy_header(transfer_.get(), "Location", 0, CURLH_HEADER, -1, &location) == CURLHE_OK)
    return HostOfReference(location->value, url_);
  return NeedsTarget(Status()) ? std::optional<std::string>(std::in_place) : std::nullopt;
}

bool BeaconTransfer::HasResponse(CURLcode code) const {
  return (code == CURLE_OK || (code == CURLE_WRITE_ERROR && bodyBegan_)) && Status() > 0;
}

bool BeaconTransfer::WantsGet(CURLcode code) const {
  constexpr long kNotImplemented = 501;
  return !secure_ && method_ == Method::Head && HasResponse(code) && Status() == kNotImplemented;
}

ProbeOutcome BeaconTransfer::Judge(CURLcode code) const {
  ProbeOutcome outcome;
  if (secure_) {
    outcome = JudgeHandshake(code);
  } else if (HasResponse(code)) {
    outcome = JudgeResponse();
  } else {
    outcome.reason = FailureOf(code);
  }
  if (outcome.answer != ProbeAnswer::None) outcome.peer = Peer();
  if (!outcome.reason.IsEmpty())
    outcome.reason = Worded("{address}: {answer}", {{"address", url_}, {"answer", outcome.reason}});
  return outcome;
}

// An untrusted chain fails the handshake itself, and libcurl takes the chain down after that, before it looks
// at the name.
bool BeaconTransfer::HasVerifiedChain() const {
  const curl_certinfo* chain = nullptr;
  curl_easy_getinfo(transfer_.get(), CURLINFO_CERTINFO, &chain);
  return chain != nullptr && chain->num_of_certs > 0;
}

ProbeOutcome BeaconTransfer::JudgeHandshake(CURLcode code) const {
  if (code == CURLE_OK) return {.answer = ProbeAnswer::Answered, .proven = true};
  if (code == CURLE_PEER_FAILED_VERIFICATION && HasVerifiedChain()) {
    return {.answer = ProbeAnswer::SomebodyElse,
            .proven = true,
            .reason = Worded("certificate for another name")};
  }
  return {.reason = FailureOf(code)};
}

ProbeOutcome BeaconTransfer::JudgeResponse() const {
  const long status = Status();
  if (status == kNetworkAuthenticationRequired)
    return {.answer = ProbeAnswer::SomebodyElse, .reason = StatusWords(status)};
  if (status >= 500) return {.reason = StatusWords(status)};
  const std::optional<std::string> host = RedirectHost();
  if (!host || *host == host_) return {.answer = ProbeAnswer::Answered};
  return {.answer = ProbeAnswer::SomebodyElse,
          .reason = host->empty() ? Worded("redirect to an address that cannot be read")
                                  : Worded("redirect to {host}", {{"host", *host}})};
}

}  // namespace Wayfinding

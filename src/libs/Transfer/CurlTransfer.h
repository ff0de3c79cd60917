#pragma once

#include "libs/Transfer/CurlHandle.h"
#include "libs/Transfer/PeerTrust.h"
#include "libs/Transfer/TransferWatch.h"

#include <memory>
#include <string>

namespace Transfer {

// A transfer as all of this project's programs make them: http and https only, 30 s to connect, within its
// limits, no user out of an address, servers verified against the system's trust store (SSL_CERT_FILE and
// SSL_CERT_DIR replace it), proxies from the environment, an early end when termination is requested. One
// thread.
class CurlTransfer {
 public:
  // `url` is the text of an Address::SendingForm. Null when the library or memory is not to be had.
  [[nodiscard]] static std::unique_ptr<CurlTransfer> Make(const std::string& url,
                                                          const TransferLimits& limits = {});

  // For further options.
  [[nodiscard]] CURL* Handle() const { return handle_.get(); }

  [[nodiscard]] CURLcode Perform();

  // The status of the last response, 0 without one.
  [[nodiscard]] long Status() const;
  // Whether the last response's header has arrived as a whole.
  [[nodiscard]] bool HasHeader() const;
  // How many redirects were followed.
  [[nodiscard]] long RedirectCount() const;
  // Where the last request went; empty before there was one.
  [[nodiscard]] std::string EffectiveURL() const;
  // Whether the last request is one over https.
  [[nodiscard]] bool IsSecure() const;
  // The trust in the server that was connected last.
  [[nodiscard]] const PeerTrust& Trust() const { return trust_; }

 private:
  explicit CurlTransfer(const TransferLimits& limits) : limits_(limits) {}

  [[nodiscard]] bool Prepare(const std::string& url);

  static CURLcode PrepareContext(CURL* handle, void* context, void* self) noexcept;
  static std::size_t TakeHeader(char* line, std::size_t one, std::size_t size, void* self) noexcept;
  static int Progress(void* self, curl_off_t downloadTotal, curl_off_t downloaded, curl_off_t uploadTotal,
                      curl_off_t uploaded) noexcept;

  TransferLimits limits_;
  TransferWatch watch_{limits_, {}};
  PeerTrust trust_;
  CurlPtr handle_;               // its sessions refer to the trust
  long headersOfRedirect_ = -1;  // the number of redirects before the response whose header was the last
};

}  // namespace Transfer

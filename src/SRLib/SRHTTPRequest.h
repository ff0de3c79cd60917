#pragma once

#include "SRLib/Gen_URL.h"

#include <cstdint>
#include <string>

namespace ServiceRecords {

// One plain HTTP GET whose response body is text. Made by SRHTTPRequestFactory; used by one thread at a time.
class SRHTTPRequest {
 public:
  explicit SRHTTPRequest(const std::wstring& url);
  virtual ~SRHTTPRequest() = default;
  SRHTTPRequest(const SRHTTPRequest&) = delete;
  SRHTTPRequest& operator=(const SRHTTPRequest&) = delete;

  // Blocks until the response or a time-out. `extraHeaders` is a block of header lines, each ended by CR LF;
  // text after the last CR LF is not sent. True exactly for a status of 200 with a UTF-8 body.
  virtual bool SendHTTPRequest(const std::wstring& extraHeaders) = 0;

  // The body after a successful send, otherwise empty.
  [[nodiscard]] std::wstring GetBody() const { return body_; }
  // After a failed send, the response's header lines as "Name: value", each ended by CR LF. Names are in the
  // server's spelling (lower case over HTTP/2): compare them without regard to case.
  [[nodiscard]] std::wstring GetRawHeader() const { return rawHeader_; }
  // Status of the last send that reached the network, 0 when no response arrived.
  [[nodiscard]] std::int64_t GetStatus() const { return status_; }
  // Where the last answer came from: the URL behind the last redirect that was followed, otherwise the
  // request's own, as it was given.
  [[nodiscard]] std::wstring GetEffectiveURL() const;

 protected:
  Gen_URL url_;
  std::wstring body_;
  std::int64_t status_ = 0;
  std::wstring rawHeader_;
  std::wstring redirectedURL_;  // empty when no redirect was followed

 private:
  const std::wstring givenURL_;
};

}  // namespace ServiceRecords

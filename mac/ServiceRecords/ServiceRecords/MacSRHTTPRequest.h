#pragma once

#include "SRLib/SRHTTPRequest.h"
#include "SRLib/SRHTTPRequestFactory.h"

namespace ServiceRecords {

// The GET over libcurl: up to 20 redirects, to http and https only; 30 s to connect, 60 s without progress;
// bodies up to 16 MiB; ended early by termination. A transfer that does not complete has no status and no
// header, unless the response is an error of 400 or above, whose body does not matter.
class MacSRHTTPRequest : public SRHTTPRequest {
 public:
  using SRHTTPRequest::SRHTTPRequest;
  bool SendHTTPRequest(const std::wstring& extraHeaders) override;
};

class MacSRHTTPRequestFactory : public SRHTTPRequestFactory {
 public:
  // Registers the one factory.
  static void Init();
  [[nodiscard]] std::unique_ptr<SRHTTPRequest> Create(const std::wstring& url) override;
};

}  // namespace ServiceRecords

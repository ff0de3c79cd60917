#pragma once

#include "SRLib/SRHTTPRequest.h"
#include "SRLib/SRHTTPRequestFactory.h"
#include "libs/Transfer/TransferWatch.h"

namespace ServiceRecords {

// The GET over libcurl (GetRequest), within the limits whatever the status, ended early by termination. Where
// libcurl reads another server or a user out of the address, nothing is sent. A transfer that does not
// complete has no status and no header, unless the response is an error of 400 or above, whose body does not
// matter.
class MacSRHTTPRequest : public SRHTTPRequest {
 public:
  explicit MacSRHTTPRequest(const std::wstring& url, const Transfer::TransferLimits& limits = {})
      : SRHTTPRequest(url), limits_(limits) {}
  bool SendHTTPRequest(const std::wstring& extraHeaders) override;

 private:
  Transfer::TransferLimits limits_;
};

class MacSRHTTPRequestFactory : public SRHTTPRequestFactory {
 public:
  // Registers the one factory.
  static void Init();
  [[nodiscard]] std::unique_ptr<SRHTTPRequest> Create(const std::wstring& url) override;
};

}  // namespace ServiceRecords

#pragma once

#include "SRLib/Platform/WardenFunctions.h"

#include <cstdint>
#include <string>

namespace ServiceRecords {

class SRHTTPRequestFactory;

// What the authentication manager needs to know of a store. The route's texts point into strings of the
// caller, which must outlive the request; a null gateway location means that no route is forced.
struct SRWardenRequest_Data {
  std::wstring StoreURL;
  MorvaneWardenRoute Route{};
  std::wstring StoreName = {};  // for whoever is asked to log on
};

// Requests through the authentication manager, which knows the way through the gateway and answers
// authentication challenges.
class SRTrustedHTTPRequest {
 public:
  // `requests` sends what the authentication manager has prepared, and must outlive this.
  explicit SRTrustedHTTPRequest(SRHTTPRequestFactory& requests, const WardenFunctions& warden = {})
      : requests_(requests), warden_(warden) {}

  // Blocks until the store answered with status 200, which is true with the body in `response`, or until
  // there is nothing left to try; `canceled` tells that the user cancelled. Any thread;
  // several requests run at once.
  bool MakeRequest(const SRWardenRequest_Data& data, std::wstring& response, bool& canceled) const;

 private:
  // Sends the prepared request and reports its answer, whose status it returns.
  std::int64_t SendPrepared(MorvaneWardenRequestContext* context, std::wstring& response) const;

  SRHTTPRequestFactory& requests_;
  const WardenFunctions warden_;
};

}  // namespace ServiceRecords

#pragma once

#include "libs/Warden_SDK/MorvaneWarden.h"

#include <string>

namespace ServiceRecords {

// What the authentication manager needs to know of a store. The route's texts point into strings of the
// caller, which must outlive the request; a null gateway location means that no route is forced.
struct SRWardenRequest_Data {
  std::wstring StoreURL;
  MorvaneWardenRoute Route{};
};

// Requests through the authentication manager, which knows the way through the gateway and answers
// authentication challenges.
class SRTrustedHTTPRequest {
 public:
  // Blocks until the store answered with status 200, which is true with the body in `response`, or until
  // there is nothing left to try; `canceled` tells that the user cancelled. Any thread;
  // several requests run at once.
  static bool MakeRequest(const SRWardenRequest_Data& data, std::wstring& response, bool& canceled);
};

}  // namespace ServiceRecords

#include "SRLib/SRHTTPRequest.h"

#include "SRLib/SRHTTPRequestFactory.h"
#include "libs/Text/TextHelpers.h"

namespace ServiceRecords {

SRHTTPRequestFactory* SRHTTPRequestFactory::c_Instance = nullptr;

SRHTTPRequest::SRHTTPRequest(const std::wstring& url) : url_(util::narrow(url)), givenURL_(url) {}

std::wstring SRHTTPRequest::GetEffectiveURL() const {
  return redirectedURL_.empty() ? givenURL_ : redirectedURL_;
}

}  // namespace ServiceRecords

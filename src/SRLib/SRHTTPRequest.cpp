#include "SRLib/SRHTTPRequest.h"

#include "SRLib/SRHTTPRequestFactory.h"
#include "SRLib/TextHelpers.h"

namespace ServiceRecords {

SRHTTPRequestFactory* SRHTTPRequestFactory::c_Instance = nullptr;

SRHTTPRequest::SRHTTPRequest(const std::wstring& url) : url_(util::narrow(url)) {}

}  // namespace ServiceRecords

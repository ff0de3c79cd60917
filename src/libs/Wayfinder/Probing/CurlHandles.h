#pragma once

#include "libs/Lifetime/UniqueHandle.h"

#include <curl/curl.h>

namespace Wayfinding {

// This library's one place that includes libcurl: its handles as owning pointers. A transfer is taken out of
// its multi handle before it goes.
using WFCurlUrlPtr = Lifetime::UniqueHandle<CURLU, curl_url_cleanup>;
using WFCurlListPtr = Lifetime::UniqueHandle<curl_slist, curl_slist_free_all>;
using WFCurlTextPtr = Lifetime::UniqueHandle<char, curl_free>;
using WFCurlEasyPtr = Lifetime::UniqueHandle<CURL, curl_easy_cleanup>;
using WFCurlMultiPtr = Lifetime::UniqueHandle<CURLM, curl_multi_cleanup>;

}  // namespace Wayfinding

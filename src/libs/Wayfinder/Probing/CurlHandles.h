#pragma once

#include "libs/Lifetime/UniqueHandle.h"

#include <curl/curl.h>

// This library's one place that includes libcurl: its handles as owning pointers. A transfer is taken out of
// its multi handle before it goes.
using WFCurlUrlPtr = UniqueHandle<CURLU, curl_url_cleanup>;
using WFCurlListPtr = UniqueHandle<curl_slist, curl_slist_free_all>;
using WFCurlTextPtr = UniqueHandle<char, curl_free>;
using WFCurlEasyPtr = UniqueHandle<CURL, curl_easy_cleanup>;
using WFCurlMultiPtr = UniqueHandle<CURLM, curl_multi_cleanup>;

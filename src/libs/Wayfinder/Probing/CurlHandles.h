#pragma once

#include <curl/curl.h>

#include <memory>

// This library's one place that includes libcurl: its handles as owning pointers. A transfer is taken out of
// its multi handle before it goes.
struct WFCurlDeleter {
  void operator()(CURLU* url) const noexcept { curl_url_cleanup(url); }
  void operator()(curl_slist* list) const noexcept { curl_slist_free_all(list); }
  void operator()(char* text) const noexcept { curl_free(text); }
};
struct WFCurlEasyDeleter {
  void operator()(CURL* transfer) const noexcept { curl_easy_cleanup(transfer); }
};
struct WFCurlMultiDeleter {
  void operator()(CURLM* transfers) const noexcept { curl_multi_cleanup(transfers); }
};

using WFCurlUrlPtr = std::unique_ptr<CURLU, WFCurlDeleter>;
using WFCurlListPtr = std::unique_ptr<curl_slist, WFCurlDeleter>;
using WFCurlTextPtr = std::unique_ptr<char, WFCurlDeleter>;
using WFCurlEasyPtr = std::unique_ptr<CURL, WFCurlEasyDeleter>;
using WFCurlMultiPtr = std::unique_ptr<CURLM, WFCurlMultiDeleter>;

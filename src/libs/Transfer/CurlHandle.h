#pragma once

#include <curl/curl.h>
#include <string.h>

#include <memory>

// This folder's one place that includes libcurl: its handles as owning pointers.
struct CurlDeleter {
  void operator()(CURL* handle) const noexcept { curl_easy_cleanup(handle); }
  // Header lines may hold credentials.
  void operator()(curl_slist* list) const noexcept {
    for (curl_slist* line = list; line != nullptr; line = line->next) {
      ::explicit_bzero(line->data, ::strlen(line->data));
    }
    curl_slist_free_all(list);
  }
  void operator()(CURLU* url) const noexcept { curl_url_cleanup(url); }
  void operator()(char* text) const noexcept { curl_free(text); }
};

using CurlPtr = std::unique_ptr<CURL, CurlDeleter>;
using CurlListPtr = std::unique_ptr<curl_slist, CurlDeleter>;
using CurlUrlPtr = std::unique_ptr<CURLU, CurlDeleter>;
using CurlTextPtr = std::unique_ptr<char, CurlDeleter>;

#pragma once

#include "libs/Lifetime/UniqueHandle.h"

#include <curl/curl.h>
#include <string.h>

namespace Transfer {

// This folder's one place that includes libcurl: its handles as owning pointers.
using CurlPtr = Lifetime::UniqueHandle<CURL, curl_easy_cleanup>;

// Header lines may hold credentials.
inline void WipeAndFreeLines(curl_slist* lines) noexcept {
  for (curl_slist* line = lines; line != nullptr; line = line->next) {
    ::explicit_bzero(line->data, ::strlen(line->data));
  }
  curl_slist_free_all(lines);
}
using CurlListPtr = Lifetime::UniqueHandle<curl_slist, WipeAndFreeLines>;

}  // namespace Transfer

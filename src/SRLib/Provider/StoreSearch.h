#pragma once

#include "SRLib/Provider/StoreURLIndex.h"

#include <functional>
#include <string>

namespace ServiceRecords {

// Takes what a search does, step by step; nothing, when nobody wants to know.
using SearchRecord = std::function<void(const std::wstring& step)>;

// The store of the list that a URL points at: by the whole address, by the address cut back segment by
// segment, by host and port. Null when there is none.
[[nodiscard]] const SRStore* FindStoreByURL(const StoreURLIndex& stores, const std::wstring& url,
                                            const SearchRecord& record);

}  // namespace ServiceRecords

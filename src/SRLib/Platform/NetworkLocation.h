#pragma once

#include <cstdint>
#include <string>

namespace ServiceRecords {

// Where the machine stands relative to the store at this URL: a network location value of the
// network-location library. Any thread; never blocks. The platform defines it.
[[nodiscard]] std::uint32_t LocationRelativeToStoreURL(const std::wstring& storeURL);

}  // namespace ServiceRecords

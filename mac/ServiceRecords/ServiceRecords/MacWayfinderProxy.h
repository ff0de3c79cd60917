#pragma once

#include "SRLib/Provider/StoreSnapshot.h"

#include <cstdint>
#include <memory>
#include <string>

namespace ServiceRecords {

// Hands the whole list to the network-location library, which keeps it; an empty one hands over nothing. The
// stores are published as they are: nothing is added to them. Called while the provider holds its lock.
void SetAllServiceRecordsToList(const std::shared_ptr<const StoreSnapshot>& stores);

// Where the machine stands relative to the store at this URL: a network location value of the
// network-location library. Any thread; never blocks.
[[nodiscard]] std::uint32_t LocationRelativeToStoreURL(const std::wstring& storeURL);

}  // namespace ServiceRecords

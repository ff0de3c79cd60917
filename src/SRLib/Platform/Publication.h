#pragma once

#include "SRLib/Provider/StoreSnapshot.h"

#include <memory>

namespace ServiceRecords {

// Hands the whole list to the network-location library, which keeps it; an empty one hands over nothing. The
// stores are published as they are: nothing is added to them. Called while the provider holds its lock.
void SetAllServiceRecordsToList(const std::shared_ptr<const StoreSnapshot>& stores);

}  // namespace ServiceRecords

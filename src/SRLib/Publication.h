#pragma once

#include "SRLib/StoreMap.h"

namespace ServiceRecords {

// Hands the whole list to the network-location library, which keeps it; an empty map hands over nothing. The
// stores are published as they are: nothing is added to them. Called while the provider holds its lock.
void SetAllServiceRecordsToList(const StoreMap& stores);

}  // namespace ServiceRecords

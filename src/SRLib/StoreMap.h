#pragma once

#include "SRLib/SRStore.h"

#include <map>
#include <string>

namespace ServiceRecords {

// Stores by their id, in plain code-point order.
using StoreMap = std::map<std::wstring, SRStore>;

}  // namespace ServiceRecords

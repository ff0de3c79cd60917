#pragma once

#include "SRLib/Provider/StoreURL.h"
#include "SRLib/SRStore.h"

#include <memory>
#include <string>
#include <vector>

namespace ServiceRecords {

// A store as snapshots of the list share it.
struct ListedStore {
  std::wstring id;
  SRStore store;
  StoreURL url;
};

using ListedStores = std::vector<std::shared_ptr<const ListedStore>>;

}  // namespace ServiceRecords

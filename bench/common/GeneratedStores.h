#pragma once

#include "SRLib/SRStore.h"
#include "support/ServiceRecordDocument.h"

#include <cstddef>
#include <string>
#include <vector>

// The lists that are measured with: `count` stores whose texts are equally long, whatever their number.
namespace Bench {

struct StoreShape {
  std::size_t gateways = 2;
  std::size_t beacons = 2;  // of each kind
  // Where the beacons are asked, the same four for every store.
  std::string beaconServer = "http://127.0.0.1:9";
};

[[nodiscard]] std::string StoreID(std::size_t number);
[[nodiscard]] std::string StoreURL(std::size_t number);

// One of them, and all of them, as a document's author would write them.
[[nodiscard]] TestSupport::StoreText StoreAsText(std::size_t number, const StoreShape& shape = {});
[[nodiscard]] std::vector<TestSupport::StoreText> StoresAsText(std::size_t count,
                                                               const StoreShape& shape = {});

// The same as records, and as the file in which the agent keeps them.
[[nodiscard]] ServiceRecords::StoreMap Stores(std::size_t count, const StoreShape& shape = {});
[[nodiscard]] std::string ListFile(const ServiceRecords::StoreMap& stores);

}  // namespace Bench

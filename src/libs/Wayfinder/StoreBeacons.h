#pragma once

#include "libs/PropertyList/PropertyList.h"

#include <cstdint>
#include <string>
#include <vector>

namespace Wayfinding {

// Of a store dictionary, what its location is judged by. All text is UTF-8, as given.
struct StoreBeacons {
  std::string url;
  std::vector<std::string> internal;  // the store's own URL when the dictionary names none
  std::vector<std::string> external;
  std::uint64_t since = 0;  // the number of the list since which it is as it is; not compared

  bool operator==(const StoreBeacons& other) const {
    return url == other.url && internal == other.internal && external == other.external;
  }
};

// Two URLs with equal keys are the same store's: letter case and slashes at the end do not count.
[[nodiscard]] std::string StoreKey(const std::string& url);

// The stores of a list, in its order. Of several stores with one URL the last counts.
[[nodiscard]] std::vector<StoreBeacons> ReadStoreList(const PropertyList::SharedDictionaries& list);

}  // namespace Wayfinding

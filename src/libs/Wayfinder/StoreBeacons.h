#pragma once

#include "libs/PropertyList/PropertyList.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace Wayfinding {

// Of a store dictionary, what its location is judged by. All text is UTF-8, as given.
struct StoreBeacons {
  std::string url;
  std::vector<std::string> internal;  // the store's own URL when the dictionary names none
  std::vector<std::string> external;

  bool operator==(const StoreBeacons&) const = default;
};

// The same object as long as the store is in each list as it is.
using StorePtr = std::shared_ptr<const StoreBeacons>;

// Two URLs with equal keys are the same store's: letter case and slashes at the end do not count.
[[nodiscard]] std::string StoreKey(const std::string& url);

// The stores of a list by their keys. Of several with one key the last counts.
[[nodiscard]] std::map<std::string, StoreBeacons> ReadStoreList(const PropertyList::SharedDictionaries& list);

}  // namespace Wayfinding

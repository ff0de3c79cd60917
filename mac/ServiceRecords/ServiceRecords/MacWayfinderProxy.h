#pragma once

#include "Bus/StoreDictionaries.h"
#include "SRLib/Provider/StoreSnapshot.h"
#include "libs/PropertyList/PropertyList.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace ServiceRecords {

// What the core asks of a network-location library. Texts for the library are UTF-8.
class MacWayfinderProxy {
 public:
  struct Library {
    std::function<void(std::optional<PropertyList::SharedDictionaries> stores)> setStores;
    std::function<std::uint32_t(const std::string& storeURL)> locationRelativeTo;
  };

  explicit MacWayfinderProxy(Library library) : library_(std::move(library)) {}

  // One thread at a time.
  void SetStores(const std::shared_ptr<const StoreSnapshot>& stores);
  [[nodiscard]] std::uint32_t LocationRelativeTo(const std::wstring& storeURL) const;

 private:
  const Library library_;
  Agent::StoreDictionaries dictionaries_{Agent::BeaconKeys::Included};
};

// Hands the whole list to the network-location library, which keeps it; an empty one hands over nothing. The
// stores are published as they are: nothing is added to them. Called while the provider holds its lock.
void SetAllServiceRecordsToList(const std::shared_ptr<const StoreSnapshot>& stores);

// Where the machine stands relative to the store at this URL: a network location value of the
// network-location library. Any thread; never blocks.
[[nodiscard]] std::uint32_t LocationRelativeToStoreURL(const std::wstring& storeURL);

}  // namespace ServiceRecords

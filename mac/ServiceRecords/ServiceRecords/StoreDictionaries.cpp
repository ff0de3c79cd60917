#include "StoreDictionaries.h"

#include "BusMarshalling.h"
#include "StoreDictionary.h"

#include <utility>

using ServiceRecords::SRStore;
using ServiceRecords::StoreSnapshot;

PropertyList::Dictionary BusStoreDictionary(const SRStore& store) {
  return StoreDictionary(store, BeaconKeys::Omitted, BusText);
}

const PropertyList::Array& StoreDictionaries::Of(const std::shared_ptr<const StoreSnapshot>& stores) {
  if (stores == stores_) return dictionaries_;
  // Taken out first, so that nothing half moved stays behind a failure.
  const auto storesBefore = std::exchange(stores_, std::make_shared<StoreSnapshot>());
  PropertyList::Array before = std::exchange(dictionaries_, {});
  PropertyList::Array dictionaries;
  dictionaries.reserve(stores->size());
  auto kept = before.begin();
  auto keptStore = storesBefore->begin();
  for (const SRStore& store : *stores) {
    // Both lists are alive, so one place in memory is one store.
    while (keptStore != storesBefore->end() && &*keptStore != &store &&
           keptStore->GetStoreID() < store.GetStoreID()) {
      ++keptStore;
      ++kept;
    }
    const bool isShared = keptStore != storesBefore->end() && &*keptStore == &store;
    dictionaries.push_back(isShared ? std::move(*kept) : BusStoreDictionary(store));
  }
  dictionaries_ = std::move(dictionaries);
  stores_ = stores;
  return dictionaries_;
}

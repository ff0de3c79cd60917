#include "Bus/StoreDictionaries.h"

#include <utility>

namespace Agent {

using ServiceRecords::SRStore;
using ServiceRecords::StoreSnapshot;

const PropertyList::SharedDictionaries& StoreDictionaries::Of(
    const std::shared_ptr<const StoreSnapshot>& stores) {
  if (stores == stores_) return dictionaries_;
  PropertyList::SharedDictionaries dictionaries;
  dictionaries.reserve(stores->size());
  auto kept = dictionaries_.begin();
  auto keptStore = stores_->begin();
  for (const SRStore& store : *stores) {
    // Both lists are alive, so one place in memory is one store.
    while (keptStore != stores_->end() && &*keptStore != &store &&
           keptStore->GetStoreID() < store.GetStoreID()) {
      ++keptStore;
      ++kept;
    }
    const bool isShared = keptStore != stores_->end() && &*keptStore == &store;
    dictionaries.push_back(
        isShared ? *kept
                 : std::make_shared<const PropertyList::Dictionary>(StoreDictionary(store, beacons_, form_)));
  }
  dictionaries_ = std::move(dictionaries);
  stores_ = stores;
  return dictionaries_;
}

}  // namespace Agent

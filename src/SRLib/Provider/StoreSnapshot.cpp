#include "SRLib/Provider/StoreSnapshot.h"

#include <algorithm>

namespace ServiceRecords {
namespace {

ListedStores ListStores(const StoreMap& stores, const ListedStores& before) {
  ListedStores list;
  list.reserve(stores.size());
  auto known = before.begin();
  for (const auto& [id, store] : stores) {
    while (known != before.end() && (*known)->id < id) ++known;
    const bool isShared =
        known != before.end() && (*known)->id == id && (*known)->store.IsSameThroughout(store);
    list.push_back(isShared ? *known
                            : std::make_shared<const ListedStore>(ListedStore{
                                  .id = id, .store = store, .url = StoreURL(store.GetStoreURL())}));
  }
  return list;
}

}  // namespace

StoreSnapshot::StoreSnapshot(const StoreMap& stores, const StoreSnapshot& before)
    : stores_(ListStores(stores, before.stores_)), urls_(stores_) {}

const SRStore* StoreSnapshot::ByID(const std::wstring& id) const {
  const auto place =
      std::lower_bound(stores_.begin(), stores_.end(), id,
                       [](const auto& entry, const auto& sought) { return entry->id < sought; });
  return place != stores_.end() && (*place)->id == id ? &(*place)->store : nullptr;
}

}  // namespace ServiceRecords

#include "SRLib/StoreSnapshot.h"

#include <algorithm>

namespace ServiceRecords {

StoreSnapshot::StoreSnapshot(const StoreMap& stores, const StoreSnapshot& before) {
  entries_.reserve(stores.size());
  auto known = before.entries_.begin();
  for (const auto& [id, store] : stores) {
    while (known != before.entries_.end() && (*known)->id < id) ++known;
    const bool isShared =
        known != before.entries_.end() && (*known)->id == id && (*known)->store.IsSameThroughout(store);
    entries_.push_back(isShared ? *known : std::make_shared<const Entry>(Entry{.id = id, .store = store}));
  }
}

const SRStore* StoreSnapshot::ByID(const std::wstring& id) const {
  const auto place =
      std::lower_bound(entries_.begin(), entries_.end(), id,
                       [](const auto& entry, const auto& sought) { return entry->id < sought; });
  return place != entries_.end() && (*place)->id == id ? &(*place)->store : nullptr;
}

}  // namespace ServiceRecords

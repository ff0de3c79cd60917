#include "Model/StoreList.h"

#include "Shared/ShownText.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

namespace Stores {

using namespace Windows;

namespace {

std::string SortKey(const Store& store) {
  const std::string shown = ShownText::Name(store.name);
  const TextPtr folded(g_utf8_casefold(shown.c_str(), -1));
  return Taken(g_utf8_collate_key(folded.get(), -1));
}

}  // namespace

StoreList::StoreList() : items_(g_list_store_new(store_item_get_type())) {}

StoreItem* StoreList::At(guint position) const {
  const ObjectPtr<GObject> item(g_list_model_get_object(Model(), position));
  return SR_STORE_ITEM(item.get());
}

StoreItem* StoreList::Find(const std::string& id) const {
  for (guint position = 0; position < Count(); ++position) {
    if (StoreOf(At(position)).id == id) return At(position);
  }
  return nullptr;
}

std::vector<StoreItem*> StoreList::FindByURL(const std::string& url) const {
  std::vector<StoreItem*> found;
  for (guint position = 0; position < Count(); ++position) {
    if (StoreOf(At(position)).url == url) found.push_back(At(position));
  }
  return found;
}

void StoreList::Take(const std::vector<Store>& stores) {
  Replace(InOrder(stores));
}

StoreList::Items StoreList::InOrder(const std::vector<Store>& stores) const {
  std::unordered_map<std::string, StoreItem*> held;
  for (guint position = 0; position < Count(); ++position)
    held.emplace(StoreOf(At(position)).id, At(position));
  std::vector<std::pair<std::string, const Store*>> ordered;
  ordered.reserve(stores.size());
  for (const Store& store : stores) ordered.emplace_back(SortKey(store), &store);
  std::stable_sort(ordered.begin(), ordered.end(),
                   [](const auto& left, const auto& right) { return left.first < right.first; });
  Items items;
  for (const auto& [key, store] : ordered) {
    const auto found = held.find(store->id);
    if (found == held.end()) {
      items.push_back(MakeStoreItem(*store));
    } else {
      SetStore(found->second, *store);
      items.push_back(Shared(found->second));
    }
  }
  return items;
}

// One change of the model, no longer than it has to be, so that the window keeps what is selected and in
// view.
void StoreList::Replace(const Items& items) {
  const auto count = static_cast<guint>(items.size());
  const guint shorter = std::min(count, Count());
  guint first = 0;
  while (first < shorter && At(first) == items[first].get()) ++first;
  guint last = 0;
  while (last < shorter - first && At(Count() - 1 - last) == items[count - 1 - last].get()) ++last;
  if (first == count && count == Count()) return;
  std::vector<gpointer> added;
  for (guint position = first; position < count - last; ++position) added.push_back(items[position].get());
  g_list_store_splice(items_.get(), first, Count() - first - last, added.data(), count - first - last);
}

}  // namespace Stores

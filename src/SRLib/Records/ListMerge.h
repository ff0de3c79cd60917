#pragma once

#include <algorithm>
#include <list>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace ServiceRecords {

// The items that have come for a store, by what identifies them, and the store's own one of each. Sorted,
// because a document may bring many.
template <class Item>
class IncomingIndex {
 public:
  template <class Key>
  IncomingIndex(const std::list<Item>& incoming, Key key) {
    places_.reserve(incoming.size());
    for (const Item& item : incoming) places_.push_back({key(item), nullptr});
    std::ranges::sort(places_, {}, &Place::key);
    const auto repeated =
        std::unique(places_.begin(), places_.end(),
                    [](const Place& one, const Place& other) { return one.key == other.key; });
    places_.erase(repeated, places_.end());
  }

  // Where the own one stands, null at first; null when none has come by that key.
  [[nodiscard]] Item** Find(std::wstring_view key) {
    const auto place = std::ranges::lower_bound(places_, key, {}, &Place::key);
    return place != places_.end() && place->key == key ? &place->own : nullptr;
  }

 private:
  struct Place {
    std::wstring_view key;
    Item* own;
  };
  std::vector<Place> places_;
};

// Merges the gateways or the beacons of a newer record into a store's own. `Marks` tells what identifies one
// (Key, a reference) and reads and sets the discovery service's mark on it (Confirmed, SetConfirmed).
template <class Marks, class Item>
void MergeLists(std::list<Item>& mine, const std::list<Item>& incoming, bool dsTrusted) {
  static_assert(std::is_reference_v<decltype(Marks::Key(std::declval<const Item&>()))>);
  IncomingIndex<Item> first(incoming, [](const Item& item) -> std::wstring_view { return Marks::Key(item); });
  if (dsTrusted) {
    mine.remove_if([&first](const Item& own) {
      return Marks::Confirmed(own) && first.Find(Marks::Key(own)) == nullptr;
    });
  }
  for (Item& own : mine) {
    Item** const place = first.Find(Marks::Key(own));
    if (place != nullptr && *place == nullptr) *place = &own;
  }
  for (const Item& item : incoming) {
    Item*& own = *first.Find(Marks::Key(item));
    if (own != nullptr) {
      // The user's trust and the confirmation too: a changed document must be confirmed again.
      *own = item;
      if (dsTrusted) Marks::SetConfirmed(*own, true);
    } else {
      own = &mine.emplace_back(item);
      Marks::SetConfirmed(*own, dsTrusted);
    }
  }
}

}  // namespace ServiceRecords

#pragma once

#include <list>
#include <map>
#include <string_view>
#include <type_traits>
#include <utility>

namespace ServiceRecords {

// Merges the gateways or the beacons of a newer record into a store's own. `Marks` tells what identifies one
// (Key, a reference) and reads and sets the discovery service's mark on it (Confirmed, SetConfirmed). A
// document may bring many, so they are looked up in a sorted index.
template <class Marks, class Item>
void MergeLists(std::list<Item>& mine, const std::list<Item>& incoming, bool dsTrusted) {
  static_assert(std::is_reference_v<decltype(Marks::Key(std::declval<const Item&>()))>);
  std::map<std::wstring_view, Item*> first;  // of the own ones, for each that comes
  for (const Item& item : incoming) first.emplace(Marks::Key(item), nullptr);
  if (dsTrusted) {
    mine.remove_if(
        [&first](const Item& own) { return Marks::Confirmed(own) && !first.contains(Marks::Key(own)); });
  }
  for (Item& own : mine) {
    const auto place = first.find(Marks::Key(own));
    if (place != first.end() && place->second == nullptr) place->second = &own;
  }
  for (const Item& item : incoming) {
    Item*& own = first.at(Marks::Key(item));
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

#pragma once

#include <list>
#include <map>
#include <set>
#include <string>

namespace ServiceRecords {

// Merges the gateways or the beacons of a newer record into a store's own. `Marks` tells what identifies one
// (Key) and reads and sets the discovery service's mark on it (Confirmed, SetConfirmed). A document may bring
// many, so they are looked up in a sorted index.
template <class Marks, class Item>
void MergeLists(std::list<Item>& mine, const std::list<Item>& incoming, bool dsTrusted) {
  if (dsTrusted) {
    std::set<std::wstring> named;
    for (const Item& item : incoming) named.insert(Marks::Key(item));
    mine.remove_if(
        [&named](const Item& own) { return Marks::Confirmed(own) && !named.contains(Marks::Key(own)); });
  }
  std::map<std::wstring, Item*> first;
  for (Item& own : mine) first.emplace(Marks::Key(own), &own);
  for (const Item& item : incoming) {
    std::wstring key = Marks::Key(item);
    if (const auto own = first.find(key); own != first.end()) {
      // The user's trust and the confirmation too: a changed document must be confirmed again.
      *own->second = item;
      if (dsTrusted) Marks::SetConfirmed(*own->second, true);
    } else {
      mine.push_back(item);
      Marks::SetConfirmed(mine.back(), dsTrusted);
      first.emplace(std::move(key), &mine.back());
    }
  }
}

}  // namespace ServiceRecords

#pragma once

#include "SRLib/Provider/ListedStore.h"
#include "SRLib/Provider/StoreURLIndex.h"
#include "SRLib/SRStore.h"

#include <cstddef>
#include <iterator>
#include <string>

namespace ServiceRecords {

// The list of stores as it was after one of its changes. Immutable; any thread. What it hands out is good for
// as long as the snapshot is kept.
class StoreSnapshot {
 public:
  // Over `const SRStore&`, in the order of the ids.
  class Iterator {
   public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = SRStore;
    using difference_type = std::ptrdiff_t;
    using pointer = const SRStore*;
    using reference = const SRStore&;

    Iterator() = default;
    explicit Iterator(ListedStores::const_iterator place) : place_(place) {}
    reference operator*() const { return (*place_)->store; }
    pointer operator->() const { return &(*place_)->store; }
    Iterator& operator++() {
      ++place_;
      return *this;
    }
    Iterator operator++(int) { return Iterator(place_++); }
    bool operator==(const Iterator& other) const { return place_ == other.place_; }

   private:
    ListedStores::const_iterator place_;
  };

  StoreSnapshot() = default;
  explicit StoreSnapshot(const StoreMap& stores) : StoreSnapshot(stores, StoreSnapshot()) {}
  // A store that is in `before` as it is now is shared with it, at the same place in memory.
  StoreSnapshot(const StoreMap& stores, const StoreSnapshot& before);

  [[nodiscard]] Iterator begin() const { return Iterator(stores_.begin()); }
  [[nodiscard]] Iterator end() const { return Iterator(stores_.end()); }
  [[nodiscard]] std::size_t size() const { return stores_.size(); }
  [[nodiscard]] bool empty() const { return stores_.empty(); }

  // Null when there is no store of that id.
  [[nodiscard]] const SRStore* ByID(const std::wstring& id) const;
  [[nodiscard]] const StoreURLIndex& URLs() const { return urls_; }

 private:
  ListedStores stores_;
  StoreURLIndex urls_;
};

}  // namespace ServiceRecords

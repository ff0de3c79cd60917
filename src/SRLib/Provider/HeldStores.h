#pragma once

#include "SRLib/Provider/StoreSnapshot.h"
#include "SRLib/SRStore.h"

#include <memory>

namespace ServiceRecords {

// The provider's list, and a snapshot of it that is made when it is first asked for after a change. No lock
// of its own; the caller holds the provider's.
class HeldStores {
 public:
  [[nodiscard]] const StoreMap& Get() const { return stores_; }
  // The reference is for one change, made before the next snapshot.
  [[nodiscard]] StoreMap& Change() {
    mayHaveChanged_ = true;
    return stores_;
  }
  [[nodiscard]] std::shared_ptr<const StoreSnapshot> Snapshot() const;

 private:
  StoreMap stores_;
  mutable std::shared_ptr<const StoreSnapshot> snapshot_ = std::make_shared<const StoreSnapshot>();
  mutable bool mayHaveChanged_ = false;
};

}  // namespace ServiceRecords

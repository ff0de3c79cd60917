#include "SRLib/Provider/HeldStores.h"

namespace ServiceRecords {

std::shared_ptr<const StoreSnapshot> HeldStores::Snapshot() const {
  if (mayHaveChanged_) {
    snapshot_ = std::make_shared<const StoreSnapshot>(stores_, *snapshot_);
    mayHaveChanged_ = false;
  }
  return snapshot_;
}

}  // namespace ServiceRecords

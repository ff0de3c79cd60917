#pragma once

#include "libs/PropertyList/PropertyList.h"
#include "view/StoreFacts.h"

#include <vector>

namespace Dialogs {

// What the replacement of a store comes to, out of a dictionary with the keys of replaceStore.
struct StoreChanges {
  [[nodiscard]] static StoreChanges Of(const PropertyList::Dictionary& details);

  std::string name;  // of the store that is held
  std::vector<Fact> held;
  // Only what differs; nothing when it is not known what the records hold, or they hold the same.
  std::vector<Fact> changes;
  bool isKnown = false;  // whether both records are there
};

}  // namespace Dialogs

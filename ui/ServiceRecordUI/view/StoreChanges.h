#pragma once

#include "libs/PropertyList/PropertyList.h"
#include "view/StoreFacts.h"

#include <cstddef>
#include <string>
#include <vector>

namespace Dialogs {

// What the replacement of a store comes to, out of a dictionary with the keys of replaceStore.
struct StoreChanges {
  // More would be no help to anybody.
  static constexpr std::size_t kMostChanges = 100;

  [[nodiscard]] static StoreChanges Of(const PropertyList::Dictionary& details,
                                       std::size_t mostChanges = kMostChanges);

  std::string name;  // of the store that is held
  std::vector<Fact> held;
  // Only what differs, and last how many more there are; nothing when it is not known what the records hold,
  // or they hold the same.
  std::vector<Fact> changes;
  bool isKnown = false;  // whether both records are there
};

}  // namespace Dialogs

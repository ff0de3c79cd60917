#pragma once

#include "SRLib/Repository/KeyPath.h"
#include "libs/PropertyList/PropertyList.h"

#include <span>

namespace Config {

// One change of the configuration's tree. Plain; can be made to any tree, more than once.
struct TreeChange {
  enum class Kind {
    Set,              // to the value, whatever lies there
    CreateContainer,  // unless anything lies there
    Delete            // whatever lies there
  };
  Kind kind;
  KeyPath path;
  PropertyList::Value value{};
};

// Makes the changes in their order. False when none of them asks for the tree to be written.
[[nodiscard]] bool Apply(std::span<const TreeChange> changes, PropertyList::Dictionary& root);

}  // namespace Config

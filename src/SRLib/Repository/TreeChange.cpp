#include "SRLib/Repository/TreeChange.h"

#include <string_view>

namespace Config {
namespace {

using PropertyList::Dictionary;

bool Apply(const TreeChange& change, Dictionary& container) {
  const std::string_view name = change.path.EntryName();
  switch (change.kind) {
    case TreeChange::Kind::Set:
      container.Set(name, change.value);
      return true;
    case TreeChange::Kind::CreateContainer:
      if (container.Find(name) != nullptr) return false;
      container.Set(name, Dictionary());
      return true;
    case TreeChange::Kind::Delete:
      container.Erase(name);
      return true;
  }
  return false;
}

}  // namespace

bool Apply(std::span<const TreeChange> changes, Dictionary& root) {
  bool isToBeWritten = false;
  Dictionary* container = nullptr;
  std::string_view way;
  for (const TreeChange& change : changes) {
    // A change of its entries leaves a container where it is.
    if (container == nullptr || change.path.Way() != way) container = &change.path.MakeContainerIn(root);
    way = change.path.Way();
    isToBeWritten |= Apply(change, *container);
  }
  return isToBeWritten;
}

}  // namespace Config

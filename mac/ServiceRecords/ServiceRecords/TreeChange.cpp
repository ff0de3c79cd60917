#include "TreeChange.h"

namespace {

using PropertyList::Dictionary;

bool Apply(const TreeChange& change, Dictionary& root) {
  Dictionary& container = change.path.MakeContainerIn(root);
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
  for (const TreeChange& change : changes) isToBeWritten |= Apply(change, root);
  return isToBeWritten;
}

#pragma once

#include "Model/StoreItem.h"
#include "Model/StoreList.h"

#include <functional>
#include <string>

namespace Stores {

// Knows where this machine stands relative to the stores that somebody looks at: a long list does not ask for
// each of its stores. The thread of the main context.
class StoreLocations {
 public:
  using Tell = std::function<void(const Location&)>;
  // Asks the agent and tells the answer, at once or later; without one it tells nothing.
  using Ask = std::function<void(const std::string& url, const Tell& tell)>;

  StoreLocations(const StoreList& stores, Ask ask);

  // Asks for the item's location, unless that was asked before.
  void Want(StoreItem* item) const;
  // The location relative to this address has changed.
  void Renew(const std::string& url) const;
  // Whoever told the locations is another now.
  void RenewAll() const;

 private:
  void AskFor(StoreItem* item) const;

  const StoreList& stores_;
  const Ask ask_;
};

}  // namespace Stores

#include "Model/StoreLocations.h"

#include <memory>
#include <utility>

namespace Stores {

using namespace Windows;

StoreLocations::StoreLocations(const StoreList& stores, Ask ask) : stores_(stores), ask_(std::move(ask)) {}

void StoreLocations::Want(StoreItem* item) const {
  if (!WasAskedForLocation(item)) AskFor(item);
}

void StoreLocations::Renew(const std::string& url) const {
  for (StoreItem* item : stores_.FindByURL(url)) {
    if (WasAskedForLocation(item)) AskFor(item);
  }
}

void StoreLocations::RenewAll() const {
  for (guint position = 0; position < stores_.Count(); ++position) {
    if (WasAskedForLocation(stores_.At(position))) AskFor(stores_.At(position));
  }
}

void StoreLocations::AskFor(StoreItem* item) const {
  const unsigned question = AskForLocation(item);
  const std::shared_ptr<StoreItem> kept(Shared(item));
  ask_(StoreOf(item).url,
       [kept, question](const Location& location) { SetLocation(kept.get(), question, location); });
}

}  // namespace Stores

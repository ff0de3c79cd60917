#pragma once

#include "Agent/GLibHandles.h"
#include "Model/Store.h"

#include <optional>

namespace Stores {

// A store as an element of a list model. Its signal "changed" comes after each change of what it holds. The
// thread of the main context.
G_DECLARE_FINAL_TYPE(StoreItem, store_item, SR, STORE_ITEM, GObject)

[[nodiscard]] Windows::ObjectPtr<StoreItem> MakeStoreItem(const Store& store);
[[nodiscard]] const Store& StoreOf(StoreItem* item);
// Nothing while the agent has not told it.
[[nodiscard]] const std::optional<Location>& LocationOf(StoreItem* item);

void SetStore(StoreItem* item, const Store& store);

// Each question for the location has a number; only the answer to the last one counts, and none once the
// store has another address.
[[nodiscard]] unsigned AskForLocation(StoreItem* item);
[[nodiscard]] bool WasAskedForLocation(StoreItem* item);
void SetLocation(StoreItem* item, unsigned question, const Location& location);

}  // namespace Stores

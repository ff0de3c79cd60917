#pragma once

#include "Model/StoreItem.h"
#include "Shared/Adwaita.h"

#include <functional>

namespace Stores::StoreRow {

using Shown = std::function<void(StoreItem*)>;

// Makes the rows of the list of StoreItem; only those in view exist. `shown` is called with each item that
// comes into view or changes there.
[[nodiscard]] Windows::ObjectPtr<GtkListItemFactory> MakeFactory(const Shown& shown);

}  // namespace Stores::StoreRow

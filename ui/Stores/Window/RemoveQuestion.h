#pragma once

#include "Shared/Adwaita.h"

#include <functional>
#include <string>

namespace Stores {

// Asks whether the store of that name is to be removed, and calls `remove` when it is.
void AskWhetherToRemove(GtkWindow* parent, const std::string& storeName, const std::function<void()>& remove);

}  // namespace Stores

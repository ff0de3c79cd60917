#pragma once

#include "Shared/Adwaita.h"

#include <functional>
#include <string>
#include <vector>

namespace Stores {

// Lets the user choose service-record files, and hands their absolute paths to `chosen`; one that is not on
// this computer has an empty path. Nothing is called when the user chooses none.
void ChooseFiles(GtkWindow* parent, const std::function<void(const std::vector<std::string>& paths)>& chosen);

}  // namespace Stores

#pragma once

#include "Shared/Adwaita.h"

#include <string>

// Rows of the lists of what there is to know of a store.
namespace Stores::Rows {

// The texts of a row, which screen readers take for its name and its description.
void SetTexts(AdwActionRow* row, const std::string& title, const std::string& subtitle);
[[nodiscard]] AdwActionRow* Make(const std::string& title, const std::string& subtitle);
// A picture of what the row says, too.
[[nodiscard]] GtkWidget* MakeIcon(const char* name);

}  // namespace Stores::Rows

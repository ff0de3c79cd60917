#pragma once

#include "libs/PropertyList/PropertyList.h"

#include <cstddef>
#include <string>

// What the dialogs say on a terminal of that many columns, in UTF-8. The dictionaries' texts come from
// documents: they are made fit first, and stay to the right of the labels on as many lines as they need, so
// that none passes for a line of the program's own. Long names and paths are cut, a host never is: it stands
// apart from its path, whole.
namespace Dialogs::Questions {

// All that is known of the store, and the question whether to add it.
[[nodiscard]] std::string AddStore(const PropertyList::Dictionary& details, std::size_t columns);

[[nodiscard]] std::string ReplaceStore(const PropertyList::Dictionary& details, std::size_t columns);

// Title and message, and which server and file it is about; no question.
[[nodiscard]] std::string ErrorMessage(const PropertyList::Dictionary& details, std::size_t columns);

}  // namespace Dialogs::Questions

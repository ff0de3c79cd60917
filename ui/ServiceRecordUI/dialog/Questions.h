#pragma once

#include "SRLib/PropertyList/PropertyList.h"

#include <string>

// What the dialogs say on a terminal, in UTF-8. The dictionaries' texts come from documents and are made fit
// first.
namespace Questions {

// All that is known of the store, and the question whether to add it.
[[nodiscard]] std::string AddStore(const PropertyList::Dictionary& details);

[[nodiscard]] std::string ReplaceStore(const PropertyList::Dictionary& details);

// Title and message; no question.
[[nodiscard]] std::string ErrorMessage(const PropertyList::Dictionary& details);

}  // namespace Questions

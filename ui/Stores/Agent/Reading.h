#pragma once

#include "Model/Store.h"
#include "Shared/Gio.h"

#include <vector>

// What the agent's messages say. Entries that are missing or of another type read as empty.
namespace Stores::Reading {

// From aa{sv}.
[[nodiscard]] std::vector<Store> Stores(GVariant* dictionaries);
// From the parameters of Finished, (tsaa{sv}).
[[nodiscard]] Finished FinishedOpening(GVariant* parameters);
// From a message, a{sv}.
[[nodiscard]] Wording::Message MessageFrom(GVariant* dictionary);
[[nodiscard]] SavedState StateOf(const char* word);

}  // namespace Stores::Reading

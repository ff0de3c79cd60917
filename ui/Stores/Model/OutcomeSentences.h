#pragma once

#include "Model/Overview.h"
#include "Model/Store.h"

#include <string>
#include <vector>

// What became of a file that was opened, in sentences in the user's language, fit for a window.
namespace Stores::OutcomeSentences {

// A sentence for each store, in lines of their own, or one for the file where it has no stores. Of many
// stores only the first few are named. `fileName`: as a person calls the file.
[[nodiscard]] std::string Of(const Finished& finished, const std::string& fileName);

// That these files were not opened, because the agent has ended: a sentence for each, as above.
[[nodiscard]] std::string OfEnded(const std::vector<std::string>& fileNames);

// All that was told, in the order in which it was. Of many notices only the first few are told.
[[nodiscard]] std::string OfAll(const std::vector<Notice>& notices);

// The id of the first store that is in the list now as the file describes it; empty for none.
[[nodiscard]] std::string AddedStore(const Finished& finished);

// Whether all went as the user wanted.
[[nodiscard]] bool IsGood(const Finished& finished);

}  // namespace Stores::OutcomeSentences

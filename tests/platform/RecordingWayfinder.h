#pragma once

#include "libs/PropertyList/PropertyList.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// A location library that keeps what it is given. Linked in place of the real one.
namespace RecordingWayfinder {

// The lists so far, oldest first, which are forgotten.
[[nodiscard]] std::vector<std::optional<PropertyList::SharedDictionaries>> TakeLists();

// What the library answers for the store at this URL; for any other, Wayfinder::kNone.
void SetLocation(const std::string& storeURL, std::uint32_t location);

}  // namespace RecordingWayfinder

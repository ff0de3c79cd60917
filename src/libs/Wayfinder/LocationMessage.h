#pragma once

#include "libs/Text/LogText.h"

#include <string>

namespace Wayfinding {

// The library's message about the location relative to a store: "store URL: reason".
[[nodiscard]] inline std::string LocationMessage(const std::string& storeURL, const std::string& reason) {
  return "store " + LogText::Address(storeURL) + ": " + LogText::Line(reason);
}

}  // namespace Wayfinding

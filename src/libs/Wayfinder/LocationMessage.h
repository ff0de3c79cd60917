#pragma once

#include <algorithm>
#include <string>

namespace Wayfinding {

// The library's message about the location relative to a store: "store URL: reason", in one line whatever a
// document put into the address.
[[nodiscard]] inline std::string LocationMessage(const std::string& storeURL, const std::string& reason) {
  std::string message = "store " + storeURL + ": " + reason;
  std::replace_if(
      message.begin(), message.end(), [](char c) { return static_cast<unsigned char>(c) < ' '; }, ' ');
  return message;
}

}  // namespace Wayfinding

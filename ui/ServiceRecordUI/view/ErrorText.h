#pragma once

#include "libs/PropertyList/PropertyList.h"

#include <string>

namespace Dialogs {

// What a window tells of an error, out of a dictionary with the keys of errorMessage; empty what is not in
// it.
struct ErrorText {
  [[nodiscard]] static ErrorText Of(const PropertyList::Dictionary& details);

  // All of it for somebody who is to help, several lines.
  [[nodiscard]] std::string ForCopying() const;

  std::string title;
  std::string message;  // several lines
  std::string reason;   // several lines
  std::string store;
  std::string server;
  std::string file;
  std::string details;  // several lines
};

}  // namespace Dialogs

#pragma once

#include "libs/PropertyList/PropertyList.h"
#include "view/StoreFacts.h"

#include <string>
#include <vector>

namespace Dialogs {

// What a window tells and asks of a log-on, out of a dictionary with the keys of logOn.
struct LogOnQuestion {
  [[nodiscard]] static LogOnQuestion Of(const PropertyList::Dictionary& details);

  std::string introduction;  // who asks
  std::string host;
  std::string hint;  // what went before; may be empty
  std::vector<Fact> facts;
  std::string userName;       // to begin with; may be empty
  bool needsPassword = true;  // and a user name
  bool needsCode = false;
  bool canRemember = false;
};

}  // namespace Dialogs

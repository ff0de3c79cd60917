#pragma once

#include "libs/Wording/Message.h"

#include <functional>
#include <string>

namespace Srctl {

// What one check of `srctl doctor` found out. All text is UTF-8; what comes from elsewhere in it may hold any
// character. The texts about stores are shown by the window, too, which translates them.
struct Finding {
  enum class Result { Ok, Note, Problem };

  Result result = Result::Ok;
  std::string check;           // what was looked at, "log"
  Wording::Message text;       // what was seen there, a sentence
  Wording::Message next = {};  // what to do about it, a sentence; empty when there is nothing to do
  // The store that it is about, if any.
  std::string storeID = {};
  std::string storeName = {};
};

using FindingReport = std::function<void(const Finding&)>;

}  // namespace Srctl

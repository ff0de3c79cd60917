#pragma once

#include "libs/Wording/Message.h"

#include <string>
#include <vector>

namespace Wayfinding {

enum class ProbeAnswer {
  None,
  Answered,
  SomebodyElse,  // a portal: redirect to another or an unreadable host, status 511, a certificate for another
                 // name
};

// What came of asking a beacon.
struct ProbeOutcome {
  ProbeAnswer answer = ProbeAnswer::None;
  bool proven = false;    // by a certificate: for the beacon's name, or for somebody else's
  std::string peer = {};  // the numeric address that answered
  // Every address that said anything in the beacon's place, nonsense included.
  std::vector<std::string> heardFrom = {};
  Wording::Message reason = {};  // why it is no answer, or who answered instead; for the log
};

}  // namespace Wayfinding

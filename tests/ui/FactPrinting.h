#pragma once

#include "view/StoreFacts.h"

#include <ostream>

namespace Dialogs {

namespace Dialogs {

inline void PrintTo(const Fact& fact, std::ostream* stream) {
  *stream << fact.caption << ": " << fact.value;
}

}  // namespace Dialogs

}  // namespace Dialogs

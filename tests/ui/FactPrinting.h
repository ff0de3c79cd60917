#pragma once

#include "view/StoreFacts.h"

#include <ostream>

inline void PrintTo(const Fact& fact, std::ostream* stream) {
  *stream << fact.caption << ": " << fact.value;
}

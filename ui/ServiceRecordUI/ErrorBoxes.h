#pragma once

#include "libs/Lifetime/UniqueHandle.h"

#include <atomic>
#include <string_view>

// Only a few error boxes are open at a time, so that many bad documents bury neither the user's screen nor
// the machine under them; further messages go to the system log. Any thread.
namespace ErrorBoxes {

inline constexpr int kMostOpen = 4;

inline void GiveBack(std::atomic<int>* taken) {
  --*taken;
}
// The place of one open box.
using Place = UniqueHandle<std::atomic<int>, GiveBack>;

// Null when all places are taken.
[[nodiscard]] Place TakePlace();

// Writes the title and the message of an error dialog's details into the system log, as one line behind the
// reason why there is no box.
void LogMessage(std::string_view reason, const char* details);

}  // namespace ErrorBoxes

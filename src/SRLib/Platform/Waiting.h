#pragma once

namespace util {

// Blocks the calling thread for one second. False, without any delay, when the process is about to end. The
// platform defines it.
[[nodiscard]] bool WaitOneSecond();

}  // namespace util

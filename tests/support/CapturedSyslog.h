#pragma once

#include <string>
#include <vector>

// What a module of its own writes with the C library's syslog(), which the test program defines in its place.
namespace CapturedSyslog {

// The lines so far, which are forgotten.
[[nodiscard]] std::vector<std::string> TakeLines();

}  // namespace CapturedSyslog

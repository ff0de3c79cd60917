#pragma once

#include <string>
#include <vector>

// The system log of the test program: keeps its lines in memory. Linked in place of the real one.
namespace SystemLogFake {

// The lines so far, which are forgotten.
[[nodiscard]] std::vector<std::string> TakeLines();

}  // namespace SystemLogFake

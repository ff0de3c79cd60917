#pragma once

namespace Srctl {

// Reads the command line, runs the command it names and returns srctl's exit status: 0 done, 1 refused or not
// found, 2 wrong usage, 3 the agent cannot be reached.
[[nodiscard]] int RunCommandLine(int argc, const char* const* argv);

}  // namespace Srctl

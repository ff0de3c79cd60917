#pragma once

namespace Srctl {

// Reads the command line, runs the command it names and returns srctl's exit status, one of Commands::Status.
[[nodiscard]] int RunCommandLine(int argc, const char* const* argv);

}  // namespace Srctl

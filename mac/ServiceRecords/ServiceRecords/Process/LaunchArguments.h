#pragma once

#include <optional>
#include <string>
#include <vector>

namespace Agent {

// What the program's command line asks for.
struct LaunchArguments {
  // Absolute paths of files to deliver to the running agent; none: be the agent.
  std::vector<std::string> files;
  // One of them cannot be read, which was said. The agent is told of it all the same: it tells whoever looks
  // at the desktop.
  bool hasUnreadable = false;
  // Set when there is nothing left to do but to end with this status: help and version were printed, or what
  // is wrong with the command line was said.
  std::optional<int> exitStatus;

  // Relative paths count from the current directory.
  [[nodiscard]] static LaunchArguments Read(int argc, char** argv);
};

}  // namespace Agent

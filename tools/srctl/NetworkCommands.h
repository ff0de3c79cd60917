#pragma once

#include "Commands.h"

#include <chrono>
#include <optional>
#include <string>

// The commands about the network, as the agent sees it.
namespace commands {

// `wait`: how long to wait for a decision; a location that is undecided then is refused.
[[nodiscard]] Status Location(const std::string& url, std::optional<std::chrono::seconds> wait,
                              printing::Format format);
[[nodiscard]] Status Gateway(const std::string& url, printing::Format format);
[[nodiscard]] Status Reachability(printing::Format format);

// Prints what happens until SIGINT or SIGTERM.
[[nodiscard]] Status Watch(printing::Format format);

}  // namespace commands

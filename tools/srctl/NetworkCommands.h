#pragma once

#include "Commands.h"

#include <chrono>
#include <optional>
#include <string>

// The commands about the network, as the agent sees it.
namespace Srctl::Commands {

// `wait`: how long to wait for a decision; a location that is undecided then is refused.
[[nodiscard]] Status Location(const std::string& url, std::optional<std::chrono::seconds> wait,
                              Printing::Format format);
[[nodiscard]] Status Gateway(const std::string& url, Printing::Format format);
[[nodiscard]] Status Reachability(Printing::Format format);

// Prints what happens until SIGINT or SIGTERM; `initially`: first the stores and where this machine stands.
[[nodiscard]] Status Watch(bool initially, Printing::Format format);

}  // namespace Srctl::Commands

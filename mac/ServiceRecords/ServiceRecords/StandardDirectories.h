#pragma once

#include <filesystem>
#include <optional>
#include <system_error>

// The folders that the desktop assigns to programs, read from the environment at every call.
namespace StandardDirectories {

// $XDG_CONFIG_HOME, else $HOME/.config; nothing when neither is set. Relative values count as not set.
[[nodiscard]] std::optional<std::filesystem::path> UserApplicationSupport();

// First absolute entry of $XDG_CONFIG_DIRS, else /etc/xdg.
[[nodiscard]] std::filesystem::path MachineApplicationSupport();

// Creates the folder and what is missing above it, each with mode 0700 under any umask. Returns the system's
// error, or none.
[[nodiscard]] std::error_code CreateDirectories(const std::filesystem::path& folder);

}  // namespace StandardDirectories

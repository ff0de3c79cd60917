#pragma once

#include <sys/types.h>

#include <filesystem>
#include <optional>
#include <system_error>

// The folders that the desktop assigns to programs, read from the environment at every call.
namespace Files::StandardDirectories {

// $XDG_CONFIG_HOME, else $HOME/.config; nothing when neither is set. Relative values count as not set.
[[nodiscard]] std::optional<std::filesystem::path> UserApplicationSupport();

// First absolute entry of $XDG_CONFIG_DIRS, else /etc/xdg.
[[nodiscard]] std::filesystem::path MachineApplicationSupport();

// $HOME/Library/Logs; nothing when HOME is not set. An empty HOME is the root folder, as for the log itself.
[[nodiscard]] std::optional<std::filesystem::path> Logs();

// Modes of created folders: the user's own ones, and those that all users of the machine share.
inline constexpr mode_t kPrivateFolder = 0700;
inline constexpr mode_t kSharedFolder = 0755;

// Creates the folder and what is missing above it, each with that mode under any umask. Returns the system's
// error, or none.
[[nodiscard]] std::error_code CreateDirectories(const std::filesystem::path& folder,
                                                mode_t mode = kPrivateFolder);

}  // namespace Files::StandardDirectories

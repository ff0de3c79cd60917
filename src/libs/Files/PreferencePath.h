#pragma once

#include <filesystem>

namespace Files {

// The full path of the configuration file, the user's or the machine's, as the environment and the user
// database give it at this call. Creates nothing.
[[nodiscard]] std::filesystem::path PreferencePath(bool perUser);

}  // namespace Files

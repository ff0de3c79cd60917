#pragma once

#include <filesystem>

namespace Agent {

// The full path of the scope's configuration file, computed once for the process; its folder is created then.
[[nodiscard]] const std::filesystem::path& preferenceFile(bool perUser);

}  // namespace Agent

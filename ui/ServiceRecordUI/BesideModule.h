#pragma once

#include <filesystem>
#include <optional>

namespace Dialogs {

// The path of a file in the module's folder; nothing when the system does not tell where that is.
[[nodiscard]] std::optional<std::filesystem::path> BesideModule(const char* name);

}  // namespace Dialogs

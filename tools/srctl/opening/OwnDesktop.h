#pragma once

#include <filesystem>

// The desktop that srctl runs on, by the variables of its environment.
namespace Srctl::OwnDesktop {

// Whether windows can be shown there: variables may outlive the desktop that they name, and name one of
// somebody else. The program that shows the dialogs' windows finds out, in the plug-in's folder; where there
// is none, or it takes long, they cannot.
[[nodiscard]] bool ShowsWindows(const std::filesystem::path& plugIn);

}  // namespace Srctl::OwnDesktop

#pragma once

#include "doctor/Finding.h"

#include <filesystem>

// The checks of `srctl doctor` that look at this machine. They create nothing.
namespace Srctl::InstallationChecks {

// Whether the agent writes its trace log, and where.
[[nodiscard]] Finding CheckLog();

// Whether the agent can load the plug-in of its dialogs from this folder, and the plug-in run its program.
[[nodiscard]] Finding CheckPlugIn(const std::filesystem::path& bundle);

// Whether the agent can run the program that finds or asks for credentials, in the folder of its bundle.
[[nodiscard]] Finding CheckCredentialProgram(const std::filesystem::path& folder);

// Where `srctl open` has questions asked of whoever runs it, with the plug-in in this folder. Says nothing of
// the agent's own desktop.
[[nodiscard]] Finding CheckQuestions(const std::filesystem::path& plugIn);

// Whether the desktop opens service-record files with this program.
[[nodiscard]] Finding CheckFileType();

// The user's configuration file.
[[nodiscard]] Finding CheckUserConfiguration();
// The machine's, in which the agent keeps nothing so far: whatever is wrong with it is only noted.
[[nodiscard]] Finding CheckMachineConfiguration();

}  // namespace Srctl::InstallationChecks

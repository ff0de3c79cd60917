#pragma once

#include <filesystem>

// How our programs with windows begin.
namespace Windows::Program {

// Before the toolkit is initialised: by that id the desktop knows whose windows these are; the catalogues of
// the translations lie in a folder named from the program's own.
void Prepare(const char* applicationId, const std::filesystem::path& catalogues);

}  // namespace Windows::Program

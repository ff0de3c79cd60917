#pragma once

#include "support/TemporaryFolder.h"

#include <filesystem>

namespace TestSupport {

// The configuration files of this test process, whose place is decided once for a process: under a temporary
// folder that the environment names before the first test runs.
class PreferencesFolder {
 public:
  static const std::filesystem::path& Path();
};

}  // namespace TestSupport

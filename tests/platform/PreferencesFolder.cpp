#include "platform/PreferencesFolder.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace TestSupport {
namespace {

class PreferencesEnvironment : public testing::Environment {
 public:
  void SetUp() override {
    const std::filesystem::path& folder = PreferencesFolder::Path();
    ::setenv("HOME", (folder / "home").c_str(), 1);
    ::setenv("XDG_CONFIG_HOME", (folder / "user").c_str(), 1);
    ::setenv("XDG_CONFIG_DIRS", (folder / "machine").c_str(), 1);
  }
};

const auto* const g_environment = testing::AddGlobalTestEnvironment(new PreferencesEnvironment);

}  // namespace

const std::filesystem::path& PreferencesFolder::Path() {
  static const TemporaryFolder folder;
  return folder.Path();
}

}  // namespace TestSupport

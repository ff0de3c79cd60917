#include "libs/Files/PreferencePath.h"
#include "support/EnvironmentVariable.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <pwd.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using TestSupport::EnvironmentVariable;

TEST(PreferencePathTest, LiesInTheFolderOfTheUserOrOfTheMachineAndCreatesNeither) {
  const TestSupport::TemporaryFolder folder;
  const EnvironmentVariable user("XDG_CONFIG_HOME", (folder.Path() / "user").string());
  const EnvironmentVariable machine("XDG_CONFIG_DIRS", (folder.Path() / "machine").string());
  EXPECT_EQ(Files::PreferencePath(true), folder.Path() / "user/Morvane/ServiceRecords.plist");
  EXPECT_EQ(Files::PreferencePath(false), folder.Path() / "machine/Morvane/ServiceRecords.plist");
  EXPECT_TRUE(fs::is_empty(folder.Path()));
}

TEST(PreferencePathTest, OfAUserWithoutAFolderIsTheMachinesUnderTheHome) {
  const EnvironmentVariable home("HOME", std::nullopt);
  const EnvironmentVariable user("XDG_CONFIG_HOME", std::nullopt);
  const EnvironmentVariable machine("XDG_CONFIG_DIRS", "/machine");
  const passwd* const entry = ::getpwuid(::getuid());
  ASSERT_NE(entry, nullptr);
  EXPECT_EQ(Files::PreferencePath(true), fs::path(entry->pw_dir) / "machine/Morvane/ServiceRecords.plist");
}

}  // namespace

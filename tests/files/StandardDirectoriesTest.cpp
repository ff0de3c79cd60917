#include "libs/Files/StandardDirectories.h"
#include "support/EnvironmentVariable.h"
#include "support/TemporaryFolder.h"
#include "support/TestFiles.h"

#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;
using TestSupport::EnvironmentVariable;
using TestSupport::ModeOf;

TEST(StandardDirectoriesTest, TheUsersFolderIsTheConfigurationHomeElseUnderTheHome) {
  const EnvironmentVariable home("HOME", "/home/somebody");
  {
    const EnvironmentVariable configuration("XDG_CONFIG_HOME", "/somewhere");
    EXPECT_EQ(Files::StandardDirectories::UserApplicationSupport(), "/somewhere");
  }
  for (const char* relative : {"", "relative/folder"}) {
    const EnvironmentVariable configuration("XDG_CONFIG_HOME", relative);
    EXPECT_EQ(Files::StandardDirectories::UserApplicationSupport(), "/home/somebody/.config");
  }
  const EnvironmentVariable configuration("XDG_CONFIG_HOME", std::nullopt);
  EXPECT_EQ(Files::StandardDirectories::UserApplicationSupport(), "/home/somebody/.config");
}

TEST(StandardDirectoriesTest, WithoutAHomeTheUserHasNoFolder) {
  const EnvironmentVariable home("HOME", std::nullopt);
  const EnvironmentVariable configuration("XDG_CONFIG_HOME", std::nullopt);
  EXPECT_EQ(Files::StandardDirectories::UserApplicationSupport(), std::nullopt);
}

TEST(StandardDirectoriesTest, TheMachinesFolderIsTheFirstAbsoluteOne) {
  const std::pair<std::optional<std::string>, const char*> cases[] = {{std::nullopt, "/etc/xdg"},
                                                                      {"", "/etc/xdg"},
                                                                      {"relative:", "/etc/xdg"},
                                                                      {"/first:/second", "/first"},
                                                                      {":relative:/second", "/second"}};
  for (const auto& [value, expected] : cases) {
    const EnvironmentVariable folders("XDG_CONFIG_DIRS", value);
    EXPECT_EQ(Files::StandardDirectories::MachineApplicationSupport(), expected) << value.value_or("not set");
  }
}

TEST(StandardDirectoriesTest, CreatedFoldersAreForTheirOwnerOnlyUnderAnyUmask) {
  for (const mode_t mask : {0U, 077U, 0277U}) {
    const TestSupport::TemporaryFolder folder;
    const TestSupport::Umask umask(mask);
    EXPECT_FALSE(Files::StandardDirectories::CreateDirectories(folder.Path() / "a" / "b"));
    EXPECT_EQ(ModeOf(folder.Path() / "a"), 0700U) << mask;
    EXPECT_EQ(ModeOf(folder.Path() / "a" / "b"), 0700U) << mask;
  }
}

TEST(StandardDirectoriesTest, FoldersForAllAreReadableByAllUnderAnyUmask) {
  for (const mode_t mask : {0U, 077U}) {
    const TestSupport::TemporaryFolder folder;
    const TestSupport::Umask umask(mask);
    EXPECT_FALSE(Files::StandardDirectories::CreateDirectories(folder.Path() / "a" / "b",
                                                               Files::StandardDirectories::kSharedFolder));
    EXPECT_EQ(ModeOf(folder.Path() / "a"), 0755U) << mask;
    EXPECT_EQ(ModeOf(folder.Path() / "a" / "b"), 0755U) << mask;
  }
}

TEST(StandardDirectoriesTest, TheLogsAreUnderTheHomeAndNeverRelative) {
  const std::pair<std::optional<std::string>, std::optional<fs::path>> cases[] = {
      {"/home/somebody", "/home/somebody/Library/Logs"}, {"", "/Library/Logs"}, {std::nullopt, std::nullopt}};
  for (const auto& [value, expected] : cases) {
    const EnvironmentVariable home("HOME", value);
    EXPECT_EQ(Files::StandardDirectories::Logs(), expected) << value.value_or("not set");
  }
}

TEST(StandardDirectoriesTest, AFolderThatIsThereKeepsItsMode) {
  const TestSupport::TemporaryFolder folder;
  fs::create_directory(folder.Path() / "a");
  ASSERT_EQ(::chmod((folder.Path() / "a").c_str(), 0750), 0);
  EXPECT_FALSE(Files::StandardDirectories::CreateDirectories(folder.Path() / "a" / "b"));
  EXPECT_EQ(ModeOf(folder.Path() / "a"), 0750U);
}

TEST(StandardDirectoriesTest, AFileInTheWayIsAnError) {
  const TestSupport::TemporaryFolder folder;
  TestSupport::WriteFile(folder.Path() / "a", "file");
  EXPECT_TRUE(Files::StandardDirectories::CreateDirectories(folder.Path() / "a"));
  EXPECT_TRUE(Files::StandardDirectories::CreateDirectories(folder.Path() / "a" / "b"));
}

}  // namespace

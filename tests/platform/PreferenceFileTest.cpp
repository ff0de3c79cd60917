#include "Files/PreferenceFile.h"
#include "platform/PreferencesFolder.h"
#include "support/TestFiles.h"
#include "support/TraceCapture.h"

#include <gtest/gtest.h>
#include <pwd.h>

#include <cstdlib>
#include <iostream>

namespace {

namespace fs = std::filesystem;
using TestSupport::WriteFile;

// The place of the files is decided once for a process, so each of these starts a process of its own, whose
// standard error carries what it found.
class PreferenceFileTest : public testing::Test {
 protected:
  PreferenceFileTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }

  static fs::path Folder() { return TestSupport::PreferencesFolder::Path(); }
};

void PrintTraceOfFirstUse() {
  const TestSupport::TraceCapture trace;
  const fs::path user = Agent::preferenceFile(true);
  std::cerr << trace.Text() << "user=" << user.string()
            << "\nmachine=" << Agent::preferenceFile(false).string() << "\n";
  fs::remove_all(TestSupport::PreferencesFolder::Path());
  std::_Exit(0);
}

TEST_F(PreferenceFileTest, TheFirstUseCreatesTheUsersFolderForTheOwnerAndTheMachinesForAll) {
  const auto firstUse = [] {
    const TestSupport::Umask open(0);
    static_cast<void>(Agent::preferenceFile(true));
    std::cerr << std::oct << "user " << TestSupport::ModeOf(Folder() / "user/Morvane") << " machine "
              << TestSupport::ModeOf(Folder() / "machine/Morvane") << " above "
              << TestSupport::ModeOf(Folder() / "machine");
    PrintTraceOfFirstUse();
  };
  EXPECT_EXIT(firstUse(), testing::ExitedWithCode(0), "user 700 machine 755 above 755");
}

TEST_F(PreferenceFileTest, TheFirstUseSweepsWhatAKilledProcessLeft) {
  const auto firstUse = [] {
    const fs::path left = Folder() / "user/Morvane/.ServiceRecords.plist.tmp-aB3xYz";
    WriteFile(left, "left");
    static_cast<void>(Agent::preferenceFile(true));
    std::cerr << (fs::exists(left) ? "still there" : "swept");
    PrintTraceOfFirstUse();
  };
  EXPECT_EXIT(firstUse(), testing::ExitedWithCode(0), "swept");
}

TEST_F(PreferenceFileTest, AMachineFolderThatCannotBeCreatedIsLogged) {
  const auto firstUse = [] {
    WriteFile(Folder() / "machine", "a file in the folder's place");
    PrintTraceOfFirstUse();
  };
  EXPECT_EXIT(firstUse(), testing::ExitedWithCode(0),
              "preferenceFile - .*/machine/Morvane doesn't exist or can't be created\n.*"
              "preferenceFile - createDirectoryAtPath failed to create global preference directory - Not a "
              "directory\nuser=");
}

TEST_F(PreferenceFileTest, AUserFolderThatCannotBeCreatedIsLogged) {
  const auto firstUse = [] {
    WriteFile(Folder() / "user", "a file in the folder's place");
    PrintTraceOfFirstUse();
  };
  EXPECT_EXIT(firstUse(), testing::ExitedWithCode(0),
              "preferenceFile - .*/user/Morvane doesn't exist or can't be created\n.*"
              "preferenceFile - createDirectoryAtPath failed to create local preference directory - Not a "
              "directory\nuser=.*/user/Morvane/ServiceRecords.plist\n");
}

TEST_F(PreferenceFileTest, AUserWithoutAFolderHasTheMachinesPathUnderTheHome) {
  // Leads from any home to the root and from there to the test's folder, so that the real home stays clean.
  static const std::string kUpwards = "/../../../../../../../..";
  const auto firstUse = [] {
    ::unsetenv("HOME");
    ::unsetenv("XDG_CONFIG_HOME");
    ::setenv("XDG_CONFIG_DIRS", (kUpwards + Folder().string() + "/machine").c_str(), 1);
    PrintTraceOfFirstUse();
  };
  const passwd* const user = ::getpwuid(::getuid());
  ASSERT_NE(user, nullptr);
  if (!fs::is_directory(user->pw_dir)) GTEST_SKIP() << "this user's home does not exist";
  EXPECT_EXIT(firstUse(), testing::ExitedWithCode(0),
              "user=" + std::string(user->pw_dir) + kUpwards + ".*/machine/Morvane/ServiceRecords.plist\n");
}

}  // namespace

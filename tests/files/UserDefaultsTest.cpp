#include "libs/Files/UserDefaults.h"
#include "support/EnvironmentVariable.h"
#include "support/FileSystemFaults.h"
#include "support/OrdinaryUser.h"
#include "support/TemporaryFolder.h"
#include "support/TestFiles.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

namespace {

using TestSupport::EnvironmentVariable;
using TestSupport::ModeOf;
using TestSupport::ReadFile;
using TestSupport::WriteFile;

class UserDefaultsTest : public testing::Test {
 protected:
  void WriteDefault(const std::string& value) {
    WriteFile(file_, "<plist><dict><key>Other</key><data>AAAA</data><key>LogLevel</key>" + value +
                         "</dict></plist>");
  }

  TestSupport::TemporaryFolder folder_;
  const std::filesystem::path file_ = folder_.Path() / "new" / "defaults.plist";
  const Files::UserDefaults defaults_{file_};
};

TEST_F(UserDefaultsTest, AMissingFileOrValueIsZero) {
  EXPECT_EQ(defaults_.Integer("LogLevel"), 0);
  WriteDefault("<integer>1</integer>");
  EXPECT_EQ(defaults_.Integer("loglevel"), 0);
}

TEST_F(UserDefaultsTest, NumbersBooleansAndDigitsCountAsIntegers) {
  const std::pair<const char*, std::int64_t> cases[] = {{"<integer>2</integer>", 2},
                                                        {"<integer>-2</integer>", -2},
                                                        {"<true/>", 1},
                                                        {"<false/>", 0},
                                                        {"<real>2.9</real>", 2},
                                                        {"<string>3</string>", 3},
                                                        {"<string> -4x</string>", -4},
                                                        {"<string>verbose</string>", 0},
                                                        {"<string></string>", 0},
                                                        {"<data>AAAA</data>", 0},
                                                        {"<array><true/></array>", 0}};
  for (const auto& [value, expected] : cases) {
    WriteDefault(value);
    EXPECT_EQ(defaults_.Integer("LogLevel"), expected) << value;
  }
}

TEST_F(UserDefaultsTest, SettingKeepsTheOtherValues) {
  WriteDefault("<string>old</string>");
  EXPECT_FALSE(defaults_.SetInteger("LogLevel", 2));
  EXPECT_EQ(defaults_.Integer("LogLevel"), 2);
  EXPECT_NE(ReadFile(file_).find("<key>Other</key>"), std::string::npos);
}

TEST_F(UserDefaultsTest, SettingCreatesThePrivateFileAndItsFolder) {
  EXPECT_FALSE(defaults_.SetInteger("LogLevel", 1));
  EXPECT_EQ(ModeOf(file_), 0600U);
  EXPECT_EQ(ModeOf(file_.parent_path()), 0700U);
}

TEST_F(UserDefaultsTest, ADamagedFileIsKeptBeside) {
  WriteFile(file_, "garbage");
  EXPECT_FALSE(defaults_.SetInteger("LogLevel", 1));
  EXPECT_EQ(ReadFile(file_.string() + ".damaged"), "garbage");
}

TEST_F(UserDefaultsTest, AFileThatCannotBeReadIsNotReplaced) {
  WriteDefault("<string>old</string>");
  const std::string before = ReadFile(file_);
  {
    TestSupport::FileSystemFaults faults;
    faults.read = [](int) { return EIO; };
    EXPECT_EQ(defaults_.Integer("LogLevel"), 0);
    EXPECT_TRUE(defaults_.SetInteger("LogLevel", 1));
  }
  EXPECT_EQ(ReadFile(file_), before);
}

TEST_F(UserDefaultsTest, AFileThatCannotBeWrittenIsAFailure) {
  WriteFile(folder_.Path() / "new", "a file in the folder's place");
  EXPECT_TRUE(defaults_.SetInteger("LogLevel", 1));
}

TEST_F(UserDefaultsTest, WhyItsFolderCannotBeMadeIsTold) {
  std::filesystem::permissions(folder_.Path(), std::filesystem::perms(0555));
  const TestSupport::OrdinaryUser user(folder_.Path());
  EXPECT_EQ(defaults_.SetInteger("LogLevel", 1), std::errc::permission_denied);
}

TEST_F(UserDefaultsTest, TheUsersFileIsInTheConfigurationFolder) {
  const EnvironmentVariable configuration("XDG_CONFIG_HOME", folder_.Path().string());
  EXPECT_FALSE(Files::UserDefaults::Standard().SetInteger("LogLevel", 7));
  EXPECT_EQ(Files::UserDefaults(folder_.Path() / "com.morvane.ServiceRecords.plist").Integer("LogLevel"), 7);
}

TEST_F(UserDefaultsTest, AUserWithoutAFolderHasNoDefaults) {
  const EnvironmentVariable home("HOME", std::nullopt);
  const EnvironmentVariable configuration("XDG_CONFIG_HOME", std::nullopt);
  EXPECT_EQ(Files::UserDefaults::Standard().Integer("LogLevel"), 0);
  EXPECT_TRUE(Files::UserDefaults::Standard().SetInteger("LogLevel", 1));
}

}  // namespace

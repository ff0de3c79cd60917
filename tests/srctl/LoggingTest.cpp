#include "libs/Files/PropertyListFile.h"
#include "srctl/SrctlTest.h"
#include "support/OrdinaryUser.h"

#include <filesystem>
#include <fstream>
#include <iterator>

using testing::HasSubstr;
using testing::IsEmpty;

namespace {

class SrctlLogging : public SrctlTest {
 protected:
  // Whether a call now leaves its lines in the log.
  [[nodiscard]] bool CallsAreLogged() {
    const std::size_t before = agent_.LogMessages().size();
    agent_.Bus().ServiceRecords("allStores");
    return agent_.LogMessages().size() > before;
  }
};

TEST_F(SrctlLogging, IsOffUntilItIsSwitchedOn) {
  const SrctlRun run = Srctl({"logging"});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.output, "off\n");
  EXPECT_EQ(nlohmann::json::parse(Srctl({"logging", "--json"}).output), (nlohmann::json{{"logging", false}}));
  EXPECT_FALSE(agent_.Bus().HasOwner("com.morvane.ServiceRecords")) << "asking needs no agent";
}

TEST_F(SrctlLogging, SwitchesTheLogOfTheRunningAgent) {
  agent_.Start();
  EXPECT_FALSE(CallsAreLogged());
  const SrctlRun on = Srctl({"logging", "on"});
  EXPECT_EQ(on.status, 0);
  EXPECT_EQ(on.output, "Logging is on: ~/Library/Logs/ServiceRecord.log\n");
  EXPECT_TRUE(agent_.Bus().WaitUntil([&] { return CallsAreLogged(); }));
  EXPECT_EQ(Srctl({"logging"}).output, "on\n");

  const SrctlRun off = Srctl({"logging", "off"});
  EXPECT_EQ(off.status, 0);
  EXPECT_EQ(off.output, "Logging is off.\n");
  EXPECT_TRUE(agent_.Bus().WaitUntil([&] { return !CallsAreLogged(); }));
  EXPECT_EQ(Srctl({"logging"}).output, "off\n");
}

TEST_F(SrctlLogging, GivesTheNewStateInJson) {
  agent_.Start();
  EXPECT_EQ(nlohmann::json::parse(Srctl({"logging", "on", "--json"}).output),
            (nlohmann::json{{"logging", true}}));
  EXPECT_EQ(nlohmann::json::parse(Srctl({"logging", "off", "--json"}).output),
            (nlohmann::json{{"logging", false}}));
}

TEST_F(SrctlLogging, KeepsTheOtherPreferences) {
  agent_.Start();
  const auto file = agent_.Write("home/.config/com.morvane.ServiceRecords.plist",
                                 PropertyList::Write(PropertyList::Dictionary{{"Other", "kept"}}));
  EXPECT_EQ(Srctl({"logging", "on"}).status, 0);
  std::ifstream stream(file);
  const auto preferences = PropertyList::Read(std::string{std::istreambuf_iterator<char>(stream), {}});
  ASSERT_TRUE(preferences.has_value());
  EXPECT_EQ(*preferences, PropertyList::Value(PropertyList::Dictionary{{"Other", "kept"}, {"LogLevel", 1}}));
}

TEST_F(SrctlLogging, ASettingThatCannotBeSavedIsRefused) {
  agent_.Start();
  const std::string file = agent_.Write("file", "not a folder").string();
  std::vector<std::string> environment = agent_.Environment();
  environment.push_back("XDG_CONFIG_HOME=" + file);
  const SrctlRun run = RunSrctl({"logging", "on"}, environment);
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.output, IsEmpty());
  EXPECT_THAT(run.errors, HasSubstr("could not be saved in \"" + file +
                                    "/com.morvane.ServiceRecords.plist\": Not a directory. See that"));
}

TEST_F(SrctlLogging, SaysWhatFailsWhereTheDiskTakesNothing) {
  const PropertyList::Dictionary large{{"Other", std::string(2000, 'x')}};
  const auto file = agent_.Write("home/.config/com.morvane.ServiceRecords.plist", PropertyList::Write(large));
  TestSupport::ChildProcess run(
      {"bash", "-c", "trap '' XFSZ; ulimit -f 1; exec \"$0\" logging on", SR_STAGE_DIR "/bin/srctl"},
      agent_.Environment(), {.captureErrors = true});
  EXPECT_EQ(run.Wait(), 1);
  EXPECT_THAT(run.Output(), HasSubstr("could not be saved in \"" + file.string() +
                                      "\": File too large. See that its disk has room"));
}

TEST_F(SrctlLogging, SaysThatTheFolderMayNotBeWrittenIn) {
  const auto file = agent_.Write("home/.config/com.morvane.ServiceRecords.plist", "");
  std::filesystem::permissions(file.parent_path(), std::filesystem::perms(0555));
  const TestSupport::OrdinaryUser user(agent_.Home());
  TestSupport::ChildProcess run({SR_STAGE_DIR "/bin/srctl", "logging", "on"}, agent_.Environment(),
                                {.captureErrors = true});
  EXPECT_EQ(run.Wait(), 1);
  EXPECT_THAT(run.Output(),
              HasSubstr("could not be saved in \"" + file.string() + "\": Permission denied. "));
}

TEST_F(SrctlLogging, SaysThatTheFileWasKeptTooOften) {
  const auto file = agent_.Write("home/.config/com.morvane.ServiceRecords.plist", "damaged");
  for (const std::string& name : Files::PropertyListFile(file).DamagedNames())
    agent_.Write("home/.config/" + name, "another");
  EXPECT_EQ(Srctl({"logging", "on"}).errors, "srctl: The setting could not be saved in \"" + file.string() +
                                                 "\": it is damaged, and so are all its copies. Move one of "
                                                 "them away.\n");
}

TEST_F(SrctlLogging, WithoutAHomeTheSettingHasNoPlace) {
  std::vector<std::string> environment = agent_.Environment();
  environment.insert(environment.end(), {"HOME=", "XDG_CONFIG_HOME="});
  const SrctlRun run = RunSrctl({"logging", "on"}, environment);
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.errors, HasSubstr("HOME is not set"));
}

}  // namespace

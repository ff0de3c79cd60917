#include "srctl/SrctlRun.h"
#include "support/ServiceRecordDocument.h"
#include "support/TemporaryFolder.h"
#include "support/TestAgent.h"

#include <gmock/gmock.h>

#include <filesystem>

using testing::HasSubstr;
using testing::IsEmpty;

namespace {

using Commands = std::vector<std::vector<std::string>>;

class SrctlWithoutAgent : public testing::Test {
 protected:
  // Each command that needs the agent.
  [[nodiscard]] Commands CommandsForTheAgent() {
    TestSupport::StoreText store;
    store.id = "s1";
    store.name = "One";
    store.url = "https://one.example";
    const std::string file = agent_.Write("a.cr", TestSupport::ServiceRecordDocument({store})).string();
    const std::string document = agent_.Write("d.xml", TestSupport::DiscoveryDocument({store})).string();
    return {{"list"},
            {"list", "--json"},
            {"show", "s1"},
            {"delete", "s1"},
            {"default-gateway", "--id", "s1", "Branch"},
            {"default-gateway", "--url", "https://one.example", "Branch"},
            {"open", "--window", file},
            {"discover", document},
            {"location", "https://one.example"},
            {"location", "https://one.example", "--wait"},
            {"gateway", "https://one.example"},
            {"reachability"},
            {"watch"}};
  }

  static void ExpectUnreachable(const SrctlRun& run, const std::string& reason) {
    EXPECT_EQ(run.status, 3);
    EXPECT_THAT(run.output, IsEmpty());
    EXPECT_THAT(run.errors, HasSubstr("srctl: The agent cannot be reached: "));
    EXPECT_THAT(run.errors, HasSubstr(reason));
    EXPECT_THAT(run.errors, HasSubstr("One that hangs is ended by: pkill -x ServiceRecords"));
  }

  // The bus lets everybody own names, but has nobody to start.
  void ForgetTheServices() {
    std::filesystem::remove_all(agent_.Prefix() / "share/dbus-1/services");
    agent_.Bus().Call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                      "ReloadConfig");
  }

  [[nodiscard]] std::vector<std::string> EnvironmentWithoutBus() const {
    std::vector<std::string> environment;
    for (const std::string& entry : agent_.Environment()) {
      if (!entry.starts_with("DBUS_") && !entry.starts_with("XDG_RUNTIME_DIR=")) environment.push_back(entry);
    }
    environment.insert(environment.end(), {"DBUS_SESSION_BUS_ADDRESS", "XDG_RUNTIME_DIR"});
    return environment;
  }

  TestSupport::TestAgent agent_;
};

TEST_F(SrctlWithoutAgent, EveryCommandSaysThatThereIsNoBus) {
  for (const auto& command : CommandsForTheAgent()) {
    ExpectUnreachable(RunSrctl(command, EnvironmentWithoutBus()), "there is no session bus");
  }
}

TEST_F(SrctlWithoutAgent, EveryCommandSaysThatNobodyServesOnTheBus) {
  ForgetTheServices();
  for (const auto& command : CommandsForTheAgent()) {
    ExpectUnreachable(RunSrctl(command, agent_.Environment()), "com.morvane.");
  }
}

TEST_F(SrctlWithoutAgent, ABusThatIsGoneIsNoBus) {
  std::vector<std::string> environment = agent_.Environment();
  environment.push_back("DBUS_SESSION_BUS_ADDRESS=unix:path=" + (agent_.Home() / "nobody").string());
  ExpectUnreachable(RunSrctl({"list"}, environment), "there is no session bus (");
}

TEST_F(SrctlWithoutAgent, TheLoggingStateIsSavedForTheNextStart) {
  const SrctlRun run = RunSrctl({"logging", "on"}, EnvironmentWithoutBus());
  ExpectUnreachable(run, "The setting is saved; an agent follows it from its next start.");
  EXPECT_EQ(RunSrctl({"logging"}, EnvironmentWithoutBus()).output, "on\n");
}

TEST_F(SrctlWithoutAgent, WhatIsWrongWithAFileIsSaidFirst) {
  EXPECT_EQ(RunSrctl({"open", "/nowhere.cr"}, EnvironmentWithoutBus()).status, 1);
  EXPECT_EQ(RunSrctl({"discover", "-"}, EnvironmentWithoutBus(), {.input = "garbage"}).status, 1);
}

}  // namespace

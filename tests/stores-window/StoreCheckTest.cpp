#include "Agent/StoreCheck.h"
#include "stores-window/MainLoop.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

using testing::ElementsAre;
using testing::IsEmpty;

namespace Stores {
namespace {

// A check by a program that the test writes in place of srctl.
class TheCheck : public testing::Test {
 protected:
  [[nodiscard]] std::string Program(const std::string& script) const {
    const std::string path = (folder_.Path() / "srctl").string();
    std::ofstream(path) << "#!/bin/sh\ncd '" << folder_.Path().string() << "'\n" << script;
    std::filesystem::permissions(path, std::filesystem::perms::owner_all);
    return path;
  }

  void Start(const std::string& program, const std::string& storeID = "s1") {
    check_ =
        StoreCheck::Start(program, storeID,
                          {.found = [this](const CheckFinding& finding) { found_.push_back(finding.check); },
                           .ended =
                               [this](CheckEnd end) {
                                 ends_.push_back(end);
                                 check_.reset();
                               }});
  }

  void RunToEnd(const std::string& script) {
    Start(Program(script));
    ASSERT_TRUE(RunUntil([this] { return !ends_.empty(); }));
  }

  [[nodiscard]] std::string Content(const std::string& name) const {
    std::ifstream file(folder_.Path() / name);
    return {std::istreambuf_iterator<char>(file), {}};
  }

  const TestSupport::TemporaryFolder folder_;
  std::vector<std::string> found_;
  std::vector<CheckEnd> ends_;
  std::unique_ptr<StoreCheck> check_;
};

TEST_F(TheCheck, AsksForOneStoreInLines) {
  RunToEnd("printf '%s\\n' \"$@\" >arguments\n");
  EXPECT_EQ(Content("arguments"), "doctor\n--store\ns1\n--json-lines\n");
}

TEST_F(TheCheck, TellsEachFindingWhenItIsKnown) {
  ASSERT_EQ(::mkfifo((folder_.Path() / "go").c_str(), 0600), 0);
  Start(Program("echo '{\"check\":\"server\"}'\nread -r word <go\necho '{\"check\":\"location\"}'\n"));
  ASSERT_TRUE(RunUntil([this] { return !found_.empty(); }));
  EXPECT_THAT(found_, ElementsAre("server"));
  EXPECT_THAT(ends_, IsEmpty());
  std::ofstream(folder_.Path() / "go") << "on\n";
  ASSERT_TRUE(RunUntil([this] { return !ends_.empty(); }));
  EXPECT_THAT(found_, ElementsAre("server", "location"));
  EXPECT_THAT(ends_, ElementsAre(CheckEnd::Done));
}

TEST_F(TheCheck, PassesOverWhatIsNoFinding) {
  RunToEnd("echo Welcome\nprintf '\\377\\n'\necho '{\"check\":\"server\"}'\n");
  EXPECT_THAT(found_, ElementsAre("server"));
}

TEST_F(TheCheck, ThatFindsProblemsWasMade) {
  RunToEnd("echo '{\"check\":\"server\"}'\nexit 1\n");
  EXPECT_THAT(ends_, ElementsAre(CheckEnd::Done));
}

TEST_F(TheCheck, KnowsWhyThereIsNothingToTell) {
  RunToEnd("exit 1\n");
  EXPECT_THAT(ends_, ElementsAre(CheckEnd::NotInList));
  ends_.clear();
  RunToEnd("exit 3\n");
  EXPECT_THAT(ends_, ElementsAre(CheckEnd::Unreachable));
  ends_.clear();
  RunToEnd("exit 2\n");
  EXPECT_THAT(ends_, ElementsAre(CheckEnd::Failed));
  ends_.clear();
  RunToEnd("kill -KILL $$\n");
  EXPECT_THAT(ends_, ElementsAre(CheckEnd::Failed));
}

TEST_F(TheCheck, ThatIsGivenUpEndsItsProcessAndTellsNothing) {
  Start(
      Program("trap 'echo gone >ended; exit' TERM\necho '{\"check\":\"server\"}'\n"
              "for i in $(seq 5000); do sleep 0.01; done\n"));
  ASSERT_TRUE(RunUntil([this] { return !found_.empty(); }));
  check_.reset();
  EXPECT_TRUE(RunUntil([this] { return Content("ended") == "gone\n"; }));
  RunToEnd("exit 3\n");
  EXPECT_THAT(ends_, ElementsAre(CheckEnd::Unreachable)) << "only the second check tells its end";
}

TEST_F(TheCheck, IsNoneWithoutTheProgram) {
  Start((folder_.Path() / "missing").string());
  EXPECT_EQ(check_, nullptr);
}

}  // namespace
}  // namespace Stores

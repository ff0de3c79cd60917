#include "stores-window/SessionObserver.h"
#include "stores-window/StandInAgent.h"
#include "support/EnvironmentVariable.h"
#include "support/PrivateBus.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::SizeIs;

namespace Stores {
namespace {

class AnOpening : public testing::Test {
 protected:
  // Until the agent has been asked and the session knows the numbers.
  void Open(const std::vector<std::string>& paths) {
    const std::size_t expected = agent_->Opened().size() + paths.size();
    observed_.session.OpenFiles(paths);
    EXPECT_TRUE(observed_.session.IsOpening());
    ASSERT_TRUE(RunUntil([&] { return agent_->Opened().size() == expected; }));
    RunPending();
  }

  [[nodiscard]] bool RunUntilNoticed(std::size_t count = 1) {
    return RunUntil([this, count] { return observed_.notices.size() >= count; });
  }

  const TestSupport::PrivateBus bus_;
  std::unique_ptr<StandInAgent> agent_ = std::make_unique<StandInAgent>(bus_.Address(), SR_SOURCE_DIR);
  ObservedSession observed_{bus_.Address()};
};

TEST_F(AnOpening, HandsTheFileToTheAgentAndTellsWhatBecameOfIt) {
  Open({"/home/me/a b.cr"});
  EXPECT_THAT(agent_->Opened(), ElementsAre("/home/me/a b.cr"));
  agent_->Finish(1, "added", "[{'StoreName': <'One'>, 'Outcome': <'added'>}]");
  ASSERT_TRUE(RunUntilNoticed());
  EXPECT_EQ(observed_.notices[0].sentences, "“\u2068One\u2069” was added.");
  EXPECT_TRUE(observed_.notices[0].isGood);
  EXPECT_FALSE(observed_.session.IsOpening());
  EXPECT_EQ(observed_.openingsEnded, 1);
}

TEST_F(AnOpening, IsAskedAboutOnTheDesktopOfTheWindow) {
  const TestSupport::EnvironmentVariable display("DISPLAY", ":8");
  Open({"/home/me/a.cr"});
  EXPECT_EQ(agent_->Display(), ":8");
}

TEST_F(AnOpening, ThatWasDeclinedIsNotGood) {
  Open({"/home/me/a.cr"});
  agent_->Finish(1, "declined", "[{'StoreName': <'One'>, 'Outcome': <'declined'>}]");
  ASSERT_TRUE(RunUntilNoticed());
  EXPECT_FALSE(observed_.notices[0].isGood);
}

TEST_F(AnOpening, WithoutStoresIsToldByTheNameOfItsFile) {
  Open({"/home/me/first.cr", "/home/me/second.cr"});
  agent_->Finish(2, "not-a-service-record", "[]");
  ASSERT_TRUE(RunUntilNoticed());
  EXPECT_THAT(observed_.notices[0].sentences, HasSubstr("“\u2068second.cr\u2069”"));
  EXPECT_TRUE(observed_.session.IsOpening()) << "the first is still open";
  EXPECT_EQ(observed_.openingsEnded, 0);
}

TEST_F(AnOpening, IsToldFurtherToWhatBecameOfAnotherAtTheSameTime) {
  observed_.session.OpenFiles({"", "/home/me/first.cr", "/home/me/second.cr"});
  ASSERT_TRUE(RunUntil([&] { return agent_->Opened().size() == 2; }));
  RunPending();
  agent_->Finish(2, "not-a-service-record", "[]");
  ASSERT_TRUE(RunUntilNoticed(2));
  agent_->Finish(1, "not-a-service-record", "[]");
  ASSERT_TRUE(RunUntilNoticed(3));
  Open({"/home/me/later.cr"});
  agent_->Finish(3, "not-a-service-record", "[]");
  ASSERT_TRUE(RunUntilNoticed(4));
  EXPECT_FALSE(observed_.notices[0].isFurther);
  EXPECT_TRUE(observed_.notices[1].isFurther);
  EXPECT_TRUE(observed_.notices[2].isFurther);
  EXPECT_FALSE(observed_.notices[3].isFurther) << "those of before are over";
}

TEST_F(AnOpening, OfAFileThatIsNotHereIsNotTried) {
  observed_.session.OpenFiles({""});
  ASSERT_THAT(observed_.notices, SizeIs(1));
  EXPECT_EQ(observed_.notices[0].sentences, "Only files on this computer can be opened.");
  EXPECT_FALSE(observed_.session.IsOpening());
}

TEST_F(AnOpening, OfAPathThatTheBusCannotCarryIsNotTried) {
  observed_.session.OpenFiles({"/home/me/\xFF.cr"});
  ASSERT_THAT(observed_.notices, SizeIs(1));
  EXPECT_THAT(observed_.notices[0].sentences, HasSubstr("its path is not UTF-8 text"));
  EXPECT_FALSE(observed_.session.IsOpening());
}

TEST_F(AnOpening, EndsWithTheAgent) {
  Open({"/home/me/a.cr"});
  agent_->GiveUpTheNames();
  ASSERT_TRUE(RunUntilNoticed());
  EXPECT_EQ(observed_.notices[0].sentences,
            "“\u2068a.cr\u2069” was not opened, because the background service was ended.");
  EXPECT_FALSE(observed_.session.IsOpening());
  EXPECT_EQ(observed_.openingsEnded, 1);
}

TEST_F(AnOpening, ThatEndsWithTheAgentIsToldOfEachFile) {
  Open({"/home/me/a.cr", "/home/me/b.cr"});
  agent_->GiveUpTheNames();
  ASSERT_TRUE(RunUntilNoticed());
  EXPECT_EQ(observed_.notices[0].sentences,
            "“\u2068a.cr\u2069” was not opened, because the background service was ended.\n"
            "“\u2068b.cr\u2069” was not opened, because the background service was ended.");
  EXPECT_EQ(observed_.openingsEnded, 1);
}

TEST_F(AnOpening, ThatTheAgentCannotBeAskedForIsToldWithTheReason) {
  agent_.reset();
  observed_.session.OpenFiles({"/home/me/a.cr"});
  ASSERT_TRUE(RunUntilNoticed());
  EXPECT_THAT(observed_.notices[0].sentences, HasSubstr("“\u2068a.cr\u2069” could not be opened. \u2068"));
  EXPECT_FALSE(observed_.notices[0].isGood);
  EXPECT_FALSE(observed_.session.IsOpening());
  EXPECT_EQ(observed_.openingsEnded, 1);
}

}  // namespace
}  // namespace Stores

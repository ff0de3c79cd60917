#include "stores-window/SessionObserver.h"
#include "stores-window/StandInAgent.h"
#include "support/PrivateBus.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

using testing::ElementsAre;

namespace Stores {
namespace {

constexpr char kOne[] = "[{'StoreID': <'s1'>, 'StoreName': <'One'>, 'StoreURL': <'https://one.example'>}]";

// When the session asks again what it has asked before.
class AskingAgain : public testing::Test {
 protected:
  [[nodiscard]] bool RunUntilAsked(std::size_t times) {
    return RunUntil([this, times] { return agent_.QuestionsForStores() == times; });
  }

  // The agent is there and has been asked once, which is answered.
  void BeginWith(const std::string& stores) {
    ASSERT_TRUE(RunUntilAsked(1));
    agent_.TellStores(0, stores);
    ASSERT_TRUE(observed_.RunUntilPage(Overview::Page::Stores));
  }

  const TestSupport::PrivateBus bus_;
  StandInAgent agent_{bus_.Address(), SR_SOURCE_DIR};
  ObservedSession observed_{bus_.Address()};
};

TEST_F(AskingAgain, AnAnnouncedChangeIsLookedAt) {
  BeginWith(kOne);
  agent_.AnnounceChange();
  EXPECT_TRUE(RunUntilAsked(2));
}

TEST_F(AskingAgain, AChangeWhileTheListIsOnItsWayIsLookedAtAfterwards) {
  ASSERT_TRUE(RunUntilAsked(1));
  observed_.session.Reload();
  observed_.session.Reload();
  RunPending();
  EXPECT_EQ(agent_.QuestionsForStores(), 1U) << "one question at a time";
  agent_.TellStores(0, "[]");
  ASSERT_TRUE(RunUntilAsked(2));
  agent_.TellStores(1, kOne);
  ASSERT_TRUE(observed_.RunUntilPage(Overview::Page::Stores));
  EXPECT_THAT(observed_.IDs(), ElementsAre("s1"));
  EXPECT_EQ(agent_.QuestionsForStores(), 2U);
}

TEST_F(AskingAgain, AnotherAgentIsAskedForTheListAndForLocations) {
  BeginWith(kOne);
  observed_.session.Locations().Want(observed_.session.Stores().Find("s1"));
  ASSERT_TRUE(RunUntil([this] { return agent_.QuestionsForLocation() == 1; }));
  agent_.GiveUpTheNames();
  ASSERT_TRUE(RunUntil([this] { return observed_.Last().warning == Overview::Warning::AgentEnded; }));
  agent_.TakeTheNames();
  EXPECT_TRUE(RunUntilAsked(2));
  EXPECT_TRUE(RunUntil([this] { return agent_.QuestionsForLocation() == 2; }));
}

TEST_F(AskingAgain, AnAgentOfBeforeAnUpdateIsAskedForALocationAsItKnowsIt) {
  agent_.isOfBeforeAnUpdate = true;
  BeginWith(kOne);
  StoreItem* const item = observed_.session.Stores().Find("s1");
  observed_.session.Locations().Want(item);
  ASSERT_TRUE(RunUntil([item] { return LocationOf(item).has_value(); }));
  EXPECT_EQ(*LocationOf(item), (Location{1, "LAN, as it was said"}));
}

}  // namespace
}  // namespace Stores

#include "stores-window/SessionObserver.h"
#include "support/PrivateBus.h"
#include "support/ServiceRecordDocument.h"
#include "support/TestAgent.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using TestSupport::StoreText;

namespace Stores {
namespace {

using Page = Overview::Page;
using Warning = Overview::Warning;

StoreText StoreCalled(const std::string& id, const std::string& name) {
  StoreText store;
  store.id = id;
  store.name = name;
  store.url = "https://127.0.0.1:1/" + id;
  store.gateways = {{"Head Office", "https://127.0.0.1:1/gateway", true},
                    {"Branch", "https://127.0.0.1:1/branch", false}};
  store.internalBeacons = {"https://127.0.0.1:1/internal"};
  return store;
}

class TheSession : public testing::Test {
 protected:
  void GiveStores(const std::vector<StoreText>& stores) {
    agent_.Bus().ServiceRecords("handleDiscoveryDocument", {TestSupport::DiscoveryDocument(stores)});
  }

  [[nodiscard]] bool RunUntilStores(std::size_t count) {
    return RunUntil([this, count] { return observed_.IDs().size() == count; });
  }
  [[nodiscard]] bool RunUntilNoticed() {
    return RunUntil([this] { return !observed_.notices.empty(); });
  }
  [[nodiscard]] const std::vector<Gateway>& GatewaysOf(const std::string& id) const {
    return StoreOf(observed_.session.Stores().Find(id)).gateways;
  }

  TestSupport::TestAgent agent_;
  ObservedSession observed_{agent_.BusAddress()};
};

TEST_F(TheSession, StartsTheAgentAndShowsThatThereIsNothingYet) {
  observed_.session.Reload();
  ASSERT_TRUE(observed_.RunUntilPage(Page::Empty));
  EXPECT_EQ(observed_.Last().warning, Warning::None);
}

TEST_F(TheSession, ShowsTheStores) {
  agent_.Start();
  GiveStores({StoreCalled("s1", "One"), StoreCalled("s2", "Another")});
  observed_.session.Reload();
  ASSERT_TRUE(observed_.RunUntilPage(Page::Stores));
  EXPECT_THAT(observed_.IDs(), ElementsAre("s2", "s1"));
  EXPECT_THAT(GatewaysOf("s1"), ElementsAre(Gateway{"Head Office", "https://127.0.0.1:1/gateway", true},
                                            Gateway{"Branch", "https://127.0.0.1:1/branch", false}));
}

TEST_F(TheSession, FollowsWhatOthersChange) {
  agent_.Start();
  observed_.session.Reload();
  ASSERT_TRUE(observed_.RunUntilPage(Page::Empty));
  GiveStores({StoreCalled("s1", "One")});
  ASSERT_TRUE(observed_.RunUntilPage(Page::Stores));
  EXPECT_THAT(observed_.IDs(), ElementsAre("s1"));
}

TEST_F(TheSession, RemovesAStore) {
  agent_.Start();
  GiveStores({StoreCalled("s1", "One"), StoreCalled("s2", "Two")});
  observed_.session.Reload();
  ASSERT_TRUE(RunUntilStores(2));
  observed_.session.Remove(StoreOf(observed_.session.Stores().Find("s1")));
  ASSERT_TRUE(RunUntilStores(1));
  EXPECT_THAT(observed_.IDs(), ElementsAre("s2"));
  ASSERT_TRUE(RunUntilNoticed());
  EXPECT_EQ(observed_.notices[0].sentences, "“\u2068One\u2069” was removed.");
  EXPECT_TRUE(observed_.notices[0].isGood);
}

TEST_F(TheSession, TellsThatAStoreCouldNotBeRemoved) {
  agent_.Start();
  observed_.session.Remove({"s9", "Nine", "https://nine.example", {}});
  ASSERT_TRUE(RunUntilNoticed());
  EXPECT_EQ(observed_.notices[0].sentences, "“\u2068Nine\u2069” could not be removed.");
  EXPECT_FALSE(observed_.notices[0].isGood);
}

TEST_F(TheSession, ChoosesTheDefaultGateway) {
  agent_.Start();
  GiveStores({StoreCalled("s1", "One")});
  observed_.session.Reload();
  ASSERT_TRUE(RunUntilStores(1));
  observed_.session.ChooseGateway("s1", "Branch");
  EXPECT_TRUE(RunUntil([this] { return GatewaysOf("s1")[1].isDefault; }));
  EXPECT_FALSE(GatewaysOf("s1")[0].isDefault);
  EXPECT_THAT(observed_.notices, IsEmpty());
  EXPECT_EQ(observed_.refusals, 0);
}

TEST_F(TheSession, TellsThatAGatewayCouldNotBeChosen) {
  agent_.Start();
  GiveStores({StoreCalled("s1", "One")});
  observed_.session.ChooseGateway("s1", "Nowhere");
  ASSERT_TRUE(RunUntilNoticed());
  EXPECT_EQ(observed_.notices[0].sentences, "The gateway “\u2068Nowhere\u2069” could not be chosen.");
  EXPECT_EQ(observed_.refusals, 1);
}

TEST_F(TheSession, KnowsWhereTheMachineStandsOnceItIsDecided) {
  agent_.Start();
  GiveStores({StoreCalled("s1", "One")});
  observed_.session.Reload();
  ASSERT_TRUE(RunUntilStores(1));
  StoreItem* const item = observed_.session.Stores().Find("s1");
  observed_.session.Locations().Want(item);
  ASSERT_TRUE(RunUntil([item] { return LocationOf(item) && LocationOf(item)->number != 0; }));
  EXPECT_THAT(LocationOf(item)->reason.English(), HasSubstr("internal beacons answered"));
}

TEST_F(TheSession, SaysThatTheAgentHasEndedAndStartsItAgain) {
  agent_.Start();
  GiveStores({StoreCalled("s1", "One")});
  observed_.session.Reload();
  ASSERT_TRUE(observed_.RunUntilPage(Page::Stores));
  agent_.Terminate();
  ASSERT_TRUE(RunUntil([this] { return observed_.Last().warning == Warning::AgentEnded; }));
  EXPECT_EQ(observed_.Last().page, Page::Stores) << "what was known stays";
  EXPECT_THAT(observed_.IDs(), ElementsAre("s1"));
  observed_.session.Reload();
  ASSERT_TRUE(RunUntil([this] { return observed_.Last().warning == Warning::None; }));
  EXPECT_THAT(observed_.IDs(), ElementsAre("s1"));
}

TEST_F(TheSession, SaysThatTheStoresCannotBeRead) {
  std::filesystem::create_directories(agent_.StoresFile());  // a folder in the place of the file
  observed_.session.Reload();
  EXPECT_TRUE(observed_.RunUntilPage(Page::Unreadable));
}

TEST_F(TheSession, HearsThatSomebodySwitchedTheLog) {
  observed_.session.Reload();
  ASSERT_TRUE(observed_.RunUntilPage(Page::Empty));
  agent_.Bus().PostNotification("com.morvane.quillon.ServiceRecordsLoggingConfigurationDidChange", "");
  EXPECT_TRUE(RunUntil([this] { return observed_.loggingChanges == 1; }));
}

TEST_F(TheSession, TellsEverybodyThatTheLogWasSwitched) {
  const std::string announced = "com.morvane.quillon.ServiceRecordsLoggingConfigurationDidChange ";
  observed_.session.AnnounceLogging();
  g_dbus_connection_flush_sync(observed_.bus.get(), nullptr, nullptr);
  EXPECT_TRUE(agent_.Bus().WaitUntil(
      [&] { return agent_.Bus().Notifications() == std::vector<std::string>{announced}; }));
}

TEST(TheSessionWithoutAnAgent, SaysWhyItCannotBeReached) {
  const TestSupport::PrivateBus bus;
  ObservedSession observed(bus.Address());
  observed.session.Reload();
  ASSERT_TRUE(observed.RunUntilPage(Page::Unreachable));
  EXPECT_THAT(observed.Last().problem, HasSubstr("com.morvane.ServiceRecords"));
}

TEST(TheSessionWithoutAnAgent, MayEndWhileItWaits) {
  const TestSupport::PrivateBus bus;
  {
    ObservedSession observed(bus.Address());
    observed.session.Reload();
    observed.session.OpenFiles({"/home/me/a.cr"});
  }
  RunPending();
}

}  // namespace
}  // namespace Stores

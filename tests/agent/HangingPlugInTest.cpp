#include "support/AgentTest.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using TestSupport::AgentTest;

// A plug-in one of whose dialogs never returns, not even at termination.
using HangingPlugIn = AgentTest;

TEST_F(HangingPlugIn, InTheTrustDialogDoesNotKeepTheAgentFromItsEnd) {
  StartWithHanging("addStore");
  agent_.Bus().OpenFiles({agent_.URI(OpenableFile("a.cr", {Store("s1", "One")}))});
  ASSERT_TRUE(WaitForHanging(1));
  EXPECT_EQ(agent_.Terminate(), 0);
}

// A forced end joins no thread, of which ThreadSanitizer makes an exit status of its own.
#ifndef __SANITIZE_THREAD__
TEST_F(HangingPlugIn, InTheReplaceDialogDoesNotKeepTheAgentFromItsEnd) {
  StartWithHanging("replaceStore");
  Open(OpenableFile("a.cr", {Store("s1", "Old")}));
  agent_.Bus().OpenFiles({agent_.URI(OpenableFile("b.cr", {Store("s1", "New")}))});
  ASSERT_TRUE(WaitForHanging(1));
  EXPECT_EQ(agent_.Terminate(), 0);
  agent_.Start();
  EXPECT_THAT(StoreIDs(), ElementsAre("s1"));
}

TEST_F(HangingPlugIn, InTheReplaceDialogDoesNotKeepAChangeThatWaitsForTheListFromItsEnd) {
  StartWithHanging("replaceStore");
  Open(OpenableFile("a.cr", {Store("s1", "Old")}));
  agent_.Bus().OpenFiles({agent_.URI(OpenableFile("b.cr", {Store("s1", "New")}))});
  ASSERT_TRUE(WaitForHanging(1));
  agent_.Bus().StartServiceRecords("deleteStore", {"s1"});
  EXPECT_EQ(agent_.Terminate(), 0);
  agent_.Start();
  EXPECT_EQ(agent_.Bus().ServiceRecords("storeForID", {"s1"})["StoreName"], "Old");
}

TEST_F(HangingPlugIn, InAnErrorBoxKeepsOnesOwnReadsBehindTheLatestChange) {
  StartWithHanging("errorMessage");
  const std::uint64_t first = agent_.Bus().StartServiceRecords("deleteStore", {"s1"});
  agent_.Bus().StartServiceRecords("handleDiscoveryDocument", {"this is no document"});
  EXPECT_EQ(agent_.Bus().WaitForReply(first), false);
  ASSERT_TRUE(WaitForHanging(1));
  agent_.Bus().StartServiceRecords("allStores");
  AwaitArrival(agent_.Bus());
  TestSupport::BusClient other(agent_.BusAddress());
  EXPECT_EQ(other.ServiceRecords("allStores"), nlohmann::json::array());
  EXPECT_EQ(agent_.Bus().AnsweredCalls(), std::vector<std::uint64_t>{first});
  EXPECT_EQ(agent_.Terminate(), 0);
}

TEST_F(HangingPlugIn, InAnErrorBoxOfAChangeDoesNotKeepTheAgentFromItsEnd) {
  StartWithHanging("errorMessage");
  agent_.Bus().StartServiceRecords("handleDiscoveryDocument", {"this is no document"});
  const std::uint64_t behind =
      agent_.Bus().StartServiceRecords("handleDiscoveryDocument", {"nor is this one"});
  ASSERT_TRUE(WaitForHanging(1));
  EXPECT_EQ(agent_.Terminate(), 0);
  EXPECT_NO_THROW(agent_.Bus().WaitForReply(behind)) << "what has not begun is answered";
}
#endif

TEST_F(HangingPlugIn, HoldsSixtyFourThreadsAndNoMore) {
  StartWithHanging("addStore");
  const std::string uri = agent_.URI(OpenableFile("a.cr", {Store("s1", "One")}));
  agent_.Bus().OpenFiles(std::vector<std::string>(80, uri));
  const std::uint64_t call = agent_.Bus().StartServiceRecords("handleServiceRecordFTA",
                                                              {OpenableFile("b.cr", {Store("s2", "Two")})});
  ASSERT_TRUE(WaitForHanging(64));
  EXPECT_THAT(StoreIDs(), IsEmpty()) << "the main loop goes on";
  EXPECT_FALSE(agent_.Bus().WaitUntil([&] { return Hanging() > 64; }, std::chrono::milliseconds(200)));
  EXPECT_EQ(agent_.Terminate(), 0);
  EXPECT_NO_THROW(agent_.Bus().WaitForReply(call)) << "what has not begun is answered too";
}

}  // namespace

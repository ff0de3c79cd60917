#include "support/AgentTest.h"
#include "support/RawServer.h"

#include <sys/ptrace.h>
#include <sys/wait.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <filesystem>
#include <fstream>

using nlohmann::json;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

namespace {

using TestSupport::AgentTest;

// One thread of a child process, which does nothing until this object goes; its other threads go on.
class StoppedThread {
 public:
  explicit StoppedThread(pid_t thread) : thread_(thread) {
    int status = 0;
    const bool isStopped = ::ptrace(PTRACE_SEIZE, thread_, nullptr, nullptr) == 0 &&
                           ::ptrace(PTRACE_INTERRUPT, thread_, nullptr, nullptr) == 0 &&
                           ::waitpid(thread_, &status, __WALL) == thread_ && WIFSTOPPED(status);
    EXPECT_TRUE(isStopped);
  }
  ~StoppedThread() { ::ptrace(PTRACE_DETACH, thread_, nullptr, nullptr); }
  StoppedThread(const StoppedThread&) = delete;
  StoppedThread& operator=(const StoppedThread&) = delete;

 private:
  const pid_t thread_;
};

// Calls that change the list, which all wait while a replace question is open.
class Changes : public AgentTest {
 protected:
  Changes() {
    agent_.EnableLog();
    agent_.Start();
  }

  // Besides "s1", about which the question is.
  void HoldStores(const std::vector<std::string>& ids) {
    std::vector<TestSupport::StoreText> stores;
    for (const std::string& id : ids) stores.push_back(Store(id, id));
    agent_.Bus().ServiceRecords("handleDiscoveryDocument", {TestSupport::DiscoveryDocument(stores)});
  }

  // "s1", for which there is no room until MakeRoomToSave.
  void HoldUnsavedStore() {
    std::filesystem::remove_all(Folder());
    std::ofstream(Folder()) << "no folder";
    HoldStores({"s1"});
    ASSERT_EQ(StateOfSavedStores(agent_.Bus()), "unsaved");
  }
  void MakeRoomToSave() const {
    std::filesystem::remove(Folder());
    std::filesystem::create_directory(Folder());
  }

  static std::vector<std::string> IDs(const json& stores) {
    std::vector<std::string> ids;
    for (const json& store : stores) ids.push_back(store["StoreID"]);
    return ids;
  }

  // The entry records of the service that came after the first `skipped` ones.
  [[nodiscard]] std::vector<std::string> Begun(std::size_t skipped = 0) const {
    constexpr std::string_view kEntry = "[+] MrvServiceRecordsSvr::";
    std::vector<std::string> begun;
    for (const std::string& message : agent_.LogMessages()) {
      if (message.starts_with(kEntry)) begun.push_back(message.substr(kEntry.size()));
    }
    return {begun.begin() + static_cast<std::ptrdiff_t>(skipped), begun.end()};
  }
  [[nodiscard]] bool AwaitBegun(std::size_t count) {
    return agent_.Bus().WaitUntil([&] { return Begun().size() >= count; });
  }

 private:
  [[nodiscard]] std::filesystem::path Folder() const { return agent_.StoresFile().parent_path(); }
};

TEST_F(Changes, OfOneSenderAreAnsweredInOrderTogetherWithItsReads) {
  HoldStores({"s2", "s3"});
  AskToReplace();
  const std::size_t before = Begun().size();
  TestSupport::BusClient& bus = agent_.Bus();
  const std::vector<std::uint64_t> calls = {
      bus.StartServiceRecords("deleteStore", {"s2"}),
      bus.StartServiceRecords("allStores"),
      bus.StartServiceRecords("storeForID", {"s3"}),
      bus.StartServiceRecords("deleteStore", {"s3"}),
      bus.StartServiceRecords("deleteStore", {"s3"}),
      bus.StartServiceRecords("storeForID", {"s3"}),
      bus.StartServiceRecords("uiBundlePath"),
      bus.StartServiceRecords("handleServiceRecordFTA", {"/nowhere/at/all.cr"}),
  };
  AwaitArrival(bus);
  ASSERT_TRUE(AwaitBegun(before + 1));
  EXPECT_THAT(bus.AnsweredCalls(), IsEmpty());
  EXPECT_THAT(Begun(before), ElementsAre("deleteStore (s2)")) << "recorded when its work begins";

  agent_.Release("declined");
  EXPECT_EQ(bus.WaitForReply(calls[0]), true);
  EXPECT_THAT(IDs(bus.WaitForReply(calls[1])), ElementsAre("s1", "s3")) << "before its own next change";
  EXPECT_EQ(bus.WaitForReply(calls[2])["StoreID"], "s3");
  EXPECT_EQ(bus.WaitForReply(calls[3]), true);
  EXPECT_EQ(bus.WaitForReply(calls[4]), false);
  EXPECT_EQ(bus.WaitForReply(calls[5]), json::object());
  bus.WaitForReply(calls[7]);
  EXPECT_EQ(bus.AnsweredCalls(), calls);
}

TEST_F(Changes, OfOneSenderKeepNoOtherOnesReadsWaiting) {
  HoldStores({"s2"});
  AskToReplace();
  const std::uint64_t mine = agent_.Bus().StartServiceRecords("deleteStore", {"s2"});
  AwaitArrival(agent_.Bus());
  TestSupport::BusClient other(agent_.BusAddress());
  EXPECT_THAT(IDs(other.ServiceRecords("allStores")), ElementsAre("s1", "s2"));
  EXPECT_FALSE(agent_.Bus().HasReply(mine));
  agent_.Release("declined");
  EXPECT_EQ(agent_.Bus().WaitForReply(mine), true);
  EXPECT_THAT(IDs(other.ServiceRecords("allStores")), ElementsAre("s1"));
}

TEST_F(Changes, WaitForNoChangeButOnesOwn) {
  HoldStores({"s2"});
  AskToReplace();
  TestSupport::BusClient other(agent_.BusAddress());
  const std::uint64_t mine = agent_.Bus().StartServiceRecords("deleteStore", {"s2"});
  AwaitArrival(agent_.Bus());
  const std::uint64_t theirs = other.StartServiceRecords("deleteStore", {"s1"});
  AwaitArrival(other);
  const std::uint64_t read = agent_.Bus().StartServiceRecords("allStores");
  AwaitArrival(agent_.Bus());
  agent_.Release("declined");
  EXPECT_EQ(agent_.Bus().WaitForReply(mine), true);
  EXPECT_THAT(IDs(agent_.Bus().WaitForReply(read)), ElementsAre("s1")) << "as it was after that change";
  EXPECT_EQ(other.WaitForReply(theirs), true);
}

TEST_F(Changes, OfAllSendersAreMadeInTheOrderOfTheirArrival) {
  HoldStores({"s2", "s3"});
  AskToReplace();
  const std::size_t before = Begun().size();
  TestSupport::BusClient first(agent_.BusAddress());
  TestSupport::BusClient second(agent_.BusAddress());
  const std::string document = TestSupport::DiscoveryDocument({Store("s2", "Again")});
  const std::uint64_t calls[] = {first.StartServiceRecords("deleteStore", {"s2"}),
                                 first.StartServiceRecords("allStores")};
  AwaitArrival(first);
  const std::uint64_t discovery = second.StartServiceRecords("handleDiscoveryDocument", {document});
  AwaitArrival(second);
  const std::uint64_t last =
      first.StartServiceRecords("setDefaultGatewayForStoreURLTo", {Store("s2", "").url, "Branch"});
  AwaitArrival(first);

  agent_.Release("declined");
  EXPECT_EQ(first.WaitForReply(last), true);
  EXPECT_EQ(first.AnsweredCalls(), (std::vector<std::uint64_t>{calls[0], calls[1], last}));
  second.WaitForReply(discovery);
  std::vector<std::string> changes = Begun(before);
  std::erase(changes, "allStores");
  EXPECT_THAT(changes, ElementsAre("deleteStore (s2)", "handleDiscoveryDocument",
                                   StartsWith("setDefaultGatewayForStoreURLTo (")));
  EXPECT_EQ(first.ServiceRecords("storeForID", {"s2"})["StoreGateways"][0]["IsDefault"], true);
}

TEST_F(Changes, OfAProgramThatHasGoneAreMade) {
  HoldStores({"s2", "s3"});
  AskToReplace();
  {
    TestSupport::BusClient leaving(agent_.BusAddress());
    leaving.StartServiceRecords("deleteStore", {"s2"});
    leaving.StartServiceRecords("allStores");
    leaving.StartServiceRecords("deleteStore", {"s3"});
    AwaitArrival(leaving);
  }
  agent_.Release("declined");
  EXPECT_EQ(agent_.Bus().ServiceRecords("setDefaultGatewayForStoreIDTo", {"s1", "Branch"}), true);
  EXPECT_THAT(StoreIDs(), ElementsAre("s1"));
}

TEST_F(Changes, AreSeenByTheReadsOfBothServicesAfterTheReply) {
  HoldStores({"s1"});
  TestSupport::BusClient other(agent_.BusAddress());
  for (const std::string gateway : {"Branch", "Head Office", "Branch", "Head Office", "Branch"}) {
    EXPECT_EQ(agent_.Bus().ServiceRecords("setDefaultGatewayForStoreIDTo", {"s1", gateway}), true);
    EXPECT_EQ(other.Beacons("getCurrentGatewayForStore", {Store("s1", "").url})["GatewayName"], gateway);
    const json gateways = other.ServiceRecords("allStores")[0]["StoreGateways"];
    EXPECT_EQ(gateways[0]["IsDefault"], gateway == "Branch");
  }
}

TEST_F(Changes, ThatHaveNotBegunAtTheEndAreAnsweredAndNotMade) {
  HoldStores({"s2", "s3"});
  AskToReplace();
  const std::size_t before = Begun().size();
  TestSupport::BusClient& bus = agent_.Bus();
  const std::uint64_t begun = bus.StartServiceRecords("deleteStore", {"s2"});
  std::vector<std::uint64_t> calls = {begun};
  for (int i = 0; i < 50; ++i) {
    calls.push_back(bus.StartServiceRecords("setDefaultGatewayForStoreIDTo", {"s3", "Branch"}));
  }
  calls.push_back(bus.StartServiceRecords("deleteStore", {"s3"}));
  const std::uint64_t read = bus.StartServiceRecords("allStores");
  const std::uint64_t discovery = bus.StartServiceRecords(
      "handleDiscoveryDocument", {TestSupport::DiscoveryDocument({Store("s4", "Four")})});
  AwaitArrival(bus);
  ASSERT_TRUE(AwaitBegun(before + 1));

  EXPECT_EQ(agent_.Terminate(), 0);
  for (const std::uint64_t call : calls) EXPECT_EQ(bus.WaitForReply(call), call == begun);
  EXPECT_THAT(IDs(bus.WaitForReply(read)), ElementsAre("s1", "s3"));
  EXPECT_EQ(bus.WaitForReply(discovery), json());
  calls.insert(calls.end(), {read, discovery});
  EXPECT_EQ(bus.AnsweredCalls(), calls);

  agent_.Start();
  EXPECT_THAT(StoreIDs(), ElementsAre("s1", "s3")) << "what was begun is in the file, and nothing else";
  EXPECT_EQ(bus.Beacons("getCurrentGatewayForStore", {Store("s3", "").url})["GatewayName"], "Head Office");
}

TEST_F(Changes, DoNotBeginAfterTheSignalWhateverTheMainThreadIsDoing) {
  HoldStores({"s2", "s3"});
  AskToReplace();
  const std::size_t before = Begun().size();
  TestSupport::BusClient& bus = agent_.Bus();
  const std::uint64_t begun = bus.StartServiceRecords("deleteStore", {"s2"});
  const std::uint64_t next = bus.StartServiceRecords("deleteStore", {"s3"});
  AwaitArrival(bus);
  ASSERT_TRUE(AwaitBegun(before + 1));
  {
    const StoppedThread mainThread(agent_.Pid());
    ::kill(agent_.Pid(), SIGTERM);
    EXPECT_TRUE(bus.WaitUntil([&] {
      const std::vector<std::string> messages = agent_.LogMessages();
      return std::ranges::count(messages, "[-] MrvServiceRecordsSvr::deleteStore (1)") > 0;
    }));
  }
  EXPECT_EQ(agent_.WaitForEnd(), 0);
  EXPECT_EQ(bus.WaitForReply(begun), true);
  EXPECT_EQ(bus.WaitForReply(next), false);
  agent_.Start();
  EXPECT_THAT(StoreIDs(), ElementsAre("s1", "s3"));
}

// Its calls are in the agent's socket when it is told to end.
TEST_F(Changes, ThatArriveWithTheEndAreAnswered) {
  HoldStores({"s1"});
  TestSupport::BusClient& bus = agent_.Bus();
  ::kill(agent_.Pid(), SIGSTOP);
  const std::uint64_t change = bus.StartServiceRecords("deleteStore", {"s1"});
  const std::uint64_t read = bus.StartServiceRecords("allStores");
  // The second time the bus answers, it has passed them on.
  for (int i = 0; i < 2; ++i) EXPECT_TRUE(bus.HasOwner("com.morvane.ServiceRecords"));
  ::kill(agent_.Pid(), SIGTERM);
  ::kill(agent_.Pid(), SIGCONT);
  EXPECT_EQ(agent_.WaitForEnd(), 0);
  EXPECT_EQ(bus.WaitForReply(change), false);
  EXPECT_THAT(IDs(bus.WaitForReply(read)), ElementsAre("s1"));
  agent_.Start();
  EXPECT_THAT(StoreIDs(), ElementsAre("s1"));
}

TEST_F(Changes, ThatArriveBehindTheEndAreAnsweredWithAllThatComesBehindThem) {
  HoldStores({"s1"});
  TestSupport::BusClient& bus = agent_.Bus();
  ::kill(agent_.Pid(), SIGSTOP);
  ::kill(agent_.Pid(), SIGTERM);
  const std::vector<std::uint64_t> calls = {
      bus.StartServiceRecords("deleteStore", {"s1"}),
      bus.StartServiceRecords("handleServiceRecordFTA", {"/nowhere/at/all.cr"}),
      bus.StartServiceRecords("allStores"),
  };
  for (int i = 0; i < 2; ++i) EXPECT_TRUE(bus.HasOwner("com.morvane.ServiceRecords"));
  ::kill(agent_.Pid(), SIGCONT);
  EXPECT_EQ(agent_.WaitForEnd(), 0);
  for (const std::uint64_t call : calls) EXPECT_NO_THROW(bus.WaitForReply(call)) << call;
}

TEST_F(Changes, AndTheRetryOfASaveWaitForNoFileThatIsBeingHandled) {
  constexpr std::size_t kFiles = 8;  // so many are worked on at a time
  std::atomic<std::size_t> contacted = 0;
  const TestSupport::RawServer silent([&contacted] { ++contacted; });
  auto store = Store("silent", "Silent");
  store.gateways.clear();
  store.url = "http://127.0.0.1:" + std::to_string(silent.Port()) + "/";
  const std::string uri = agent_.URI(agent_.Write("silent.cr", TestSupport::ServiceRecordDocument({store})));
  agent_.Bus().OpenFiles(std::vector<std::string>(kFiles, uri));
  ASSERT_TRUE(agent_.Bus().WaitUntil([&] { return contacted == kFiles; }));

  HoldUnsavedStore();
  MakeRoomToSave();
  EXPECT_TRUE(agent_.Bus().WaitUntil([&] { return StateOfSavedStores(agent_.Bus()) == "good"; }));
  EXPECT_TRUE(std::filesystem::exists(agent_.StoresFile()));
  EXPECT_EQ(agent_.Terminate(), 0);
}

// The next try is a second away.
TEST_F(Changes, ThatCouldNotBeSavedAreSavedAtTheEndOnceThereIsRoom) {
  HoldUnsavedStore();
  ::kill(agent_.Pid(), SIGSTOP);
  MakeRoomToSave();
  ::kill(agent_.Pid(), SIGTERM);
  ::kill(agent_.Pid(), SIGCONT);
  EXPECT_EQ(agent_.WaitForEnd(), 0);
  agent_.Start();
  EXPECT_THAT(StoreIDs(), ElementsAre("s1"));
}

}  // namespace

#include "srctl/SrctlTest.h"

#include <sys/syscall.h>

#include <fstream>

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

namespace {

class SrctlStoreChanges : public SrctlTest {
 protected:
  SrctlStoreChanges() {
    agent_.Start();
    GiveStores({Store("s1", "One"), Store("s2", "Two")});
  }

  [[nodiscard]] std::string DefaultGateway(const std::string& id) {
    const nlohmann::json store = agent_.Bus().ServiceRecords("storeForID", {id});
    for (const auto& gateway : store["StoreGateways"]) {
      if (gateway["IsDefault"] == true) return gateway["GatewayName"];
    }
    return {};
  }
};

TEST_F(SrctlStoreChanges, ADeletedStoreIsGone) {
  const SrctlRun run = Srctl({"delete", "s1"});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.output, "Deleted the store \"s1\".\n");
  EXPECT_THAT(run.errors, IsEmpty());
  EXPECT_THAT(StoreIDs(), ElementsAre("s2"));
}

TEST_F(SrctlStoreChanges, DeletingAnUnknownStoreIsRefused) {
  for (const char* id : {"s3", "S1", ""}) {
    const SrctlRun run = Srctl({"delete", id});
    EXPECT_EQ(run.status, 1);
    EXPECT_THAT(run.output, IsEmpty());
    EXPECT_THAT(run.errors, HasSubstr("There is no store with the id"));
  }
  EXPECT_THAT(StoreIDs(), ElementsAre("s1", "s2"));
}

TEST_F(SrctlStoreChanges, TheDefaultGatewayIsChosenById) {
  ASSERT_EQ(DefaultGateway("s1"), "Head Office");
  const SrctlRun run = Srctl({"default-gateway", "--id", "s1", "Branch"});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.output, "The default gateway is now \"Branch\".\n");
  EXPECT_THAT(run.errors, IsEmpty());
  EXPECT_EQ(DefaultGateway("s1"), "Branch");
  EXPECT_EQ(DefaultGateway("s2"), "Head Office") << "another store's gateway is its own";
}

TEST_F(SrctlStoreChanges, TheDefaultGatewayIsChosenByUrl) {
  EXPECT_EQ(Srctl({"default-gateway", "Branch", "--url", Store("s2", "").url}).status, 0);
  EXPECT_EQ(DefaultGateway("s2"), "Branch");
  EXPECT_EQ(DefaultGateway("s1"), "Head Office");
}

TEST_F(SrctlStoreChanges, AnUnknownGatewayOrStoreIsRefused) {
  const std::string url = Store("s1", "").url;
  for (const std::vector<std::string>& arguments : {std::vector<std::string>{"--id", "s1", "Nowhere"},
                                                    {"--id", "s3", "Branch"},
                                                    {"--id", "s1", ""},
                                                    {"--url", url, "Nowhere"},
                                                    {"--url", "https://nobody.example", "Branch"},
                                                    {"--url", "", "Branch"}}) {
    std::vector<std::string> command{"default-gateway"};
    command.insert(command.end(), arguments.begin(), arguments.end());
    const SrctlRun run = Srctl(command);
    EXPECT_EQ(run.status, 1);
    EXPECT_THAT(run.output, IsEmpty());
    EXPECT_THAT(run.errors, HasSubstr("with a gateway named \"" + arguments.back() + "\""));
  }
  EXPECT_EQ(DefaultGateway("s1"), "Head Office");
}

// How long a call may take shows in nothing but what the process waits in: ppoll, without a time.
bool WaitsForEver(pid_t process) {
  std::ifstream file("/proc/" + std::to_string(process) + "/syscall");
  long call = -1;
  std::string descriptors, count, time;
  file >> call >> descriptors >> count >> time;
  return call == SYS_ppoll && time == "0x0";
}

TEST_F(SrctlTest, WhileAQuestionHoldsAChangeUpSaysWhatIsWaitedFor) {
  agent_.Start();
  GiveStores({Store("s2", "Two"), Store("s3", "Three")});
  AskToReplace();
  TestSupport::ChildProcess deletion = StartSrctl({"delete", "s2"});
  TestSupport::ChildProcess choice = StartSrctl({"default-gateway", "--id", "s3", "Branch"});
  for (TestSupport::ChildProcess* srctl : {&deletion, &choice})
    EXPECT_THAT(srctl->WaitForOutput("\n"),
                StartsWith("srctl: The agent has not answered yet. If it asks you"));
  for (TestSupport::ChildProcess* srctl : {&deletion, &choice})
    EXPECT_TRUE(agent_.Bus().WaitUntil([&] { return WaitsForEver(srctl->Pid()); }));
  agent_.Release("declined");
  EXPECT_EQ(deletion.Wait(), 0);
  EXPECT_THAT(deletion.Output(), EndsWith("\nDeleted the store \"s2\".\n"));
  EXPECT_EQ(choice.Wait(), 0);
  EXPECT_THAT(choice.Output(), EndsWith("\nThe default gateway is now \"Branch\".\n"));
}

}  // namespace

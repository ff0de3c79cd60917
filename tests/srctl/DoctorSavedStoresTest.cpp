#include "libs/Bus/ServiceNames.h"
#include "srctl/DoctorTest.h"

#include <sys/resource.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace {

namespace fs = std::filesystem;

// A list whose file cannot be written or read for a time, and an agent that is left to itself then.
class DoctorOfSavedStores : public DoctorTest {
 protected:
  // How large the agent's files may grow.
  void LimitFiles(rlim_t bytes) {
    const rlimit limit{bytes, RLIM_INFINITY};
    if (::prlimit(agent_.Pid(), RLIMIT_FSIZE, &limit, nullptr) != 0)
      throw std::system_error(errno, std::generic_category(), "prlimit");
  }

  [[nodiscard]] std::string SavedText() const {
    std::ifstream file(agent_.StoresFile());
    return {std::istreambuf_iterator<char>(file), {}};
  }

  [[nodiscard]] bool IsSaved() {
    return agent_.Bus().Call(Bus::ServiceNames::kServiceRecords, Bus::ServiceNames::kServiceRecordsPath,
                             "org.freedesktop.DBus.Properties", "Get",
                             {Bus::ServiceNames::kServiceRecordsInterface, "stateOfSavedStores"}) == "good";
  }

  [[nodiscard]] bool SavesWithoutHelp(const std::string& id) {
    return agent_.Bus().WaitUntil([&] { return IsSaved(); }) &&
           SavedText().find("<key>" + id) == std::string::npos;
  }

  [[nodiscard]] SrctlRun ExpectSavedStoresProblem(const std::string& what) {
    SrctlRun run = Srctl({"doctor"});
    EXPECT_EQ(run.status, 1);
    ExpectProblem(Line(run, "saved stores"), what, "Make ");
    return run;
  }

  void ExpectNoProblem() {
    const SrctlRun run = Srctl({"doctor"});
    EXPECT_EQ(run.status, 0) << run.output;
    EXPECT_THAT(run.output, Not(HasSubstr("saved stores")));
  }

  // Starts the agent anew while something else lies in the place of the file, which comes back later.
  void StartWithoutTheFile() {
    agent_.Terminate();
    fs::rename(agent_.StoresFile(), kept_);
    fs::create_directory(agent_.StoresFile());
    agent_.Start();
  }
  void BringTheFileBack() {
    fs::remove(agent_.StoresFile());
    fs::rename(kept_, agent_.StoresFile());
  }

  const fs::path kept_ = agent_.Home() / "kept.plist";
};

TEST_F(DoctorOfSavedStores, WhatAFullDiskDidNotTakeIsToldUntilItIsSavedWithoutAnotherChange) {
  GiveStores({WorkingStore("s1", "One"), WorkingStore("s2", "Two")});
  ExpectNoProblem();
  LimitFiles(0);
  EXPECT_EQ(agent_.Bus().ServiceRecords("deleteStore", {"s1"}), true);
  EXPECT_THAT(StoreIDs(), ElementsAre("s2"));
  EXPECT_THAT(SavedText(), HasSubstr("<key>s1</key>"));
  const SrctlRun run = ExpectSavedStoresProblem("The agent could not save its list of stores.");
  EXPECT_THAT(StoreLine(run, "server"), IsEmpty()) << "the deleted store";
  LimitFiles(RLIM_INFINITY);
  EXPECT_TRUE(SavesWithoutHelp("s1"));
  ExpectNoProblem();
  agent_.Terminate();
  agent_.Start();
  EXPECT_THAT(StoreIDs(), ElementsAre("s2"));
}

TEST_F(DoctorOfSavedStores, AListThatCannotBeSavedDoesNotKeepTheAgentFromEnding) {
  GiveStores({WorkingStore("s1", "One")});
  LimitFiles(0);
  EXPECT_EQ(agent_.Bus().ServiceRecords("deleteStore", {"s1"}), true);
  EXPECT_EQ(agent_.Terminate(), 0);
}

TEST_F(DoctorOfSavedStores, AChangeThatAFullDiskDidNotTakeIsMadeWithAWarning) {
  const TestSupport::StoreText two = WorkingStore("s2", "Two");
  GiveStores({WorkingStore("s1", "One"), two});
  LimitFiles(0);
  for (const std::vector<std::string>& command :
       std::vector<std::vector<std::string>>{{"delete", "s1"},
                                             {"default-gateway", "--id", "s2", "Branch"},
                                             {"default-gateway", "--url", two.url, "Branch"}}) {
    const SrctlRun run = Srctl(command);
    EXPECT_EQ(run.status, 0) << command.front();
    EXPECT_THAT(run.output, Not(IsEmpty())) << command.front();
    EXPECT_EQ(run.errors,
              "srctl: The change is not saved yet: the agent could not write its list, and tries again by "
              "itself. What to do: srctl doctor\n")
        << command.front();
  }
  EXPECT_THAT(StoreIDs(), ElementsAre("s2"));
}

TEST_F(DoctorOfSavedStores, AFileThatCannotBeReadIsToldAndReadWhenItCan) {
  GiveStores({WorkingStore("s1", "One")});
  StartWithoutTheFile();
  EXPECT_THAT(StoreIDs(), IsEmpty());
  const std::size_t told = agent_.Bus().Notifications().size();
  const SrctlRun run = ExpectSavedStoresProblem("The agent could not read the file with your stores.");
  EXPECT_EQ(Line(run, "stores"),
            "note: stores: It was not looked at, because the agent could not read the file.");
  BringTheFileBack();
  EXPECT_TRUE(agent_.Bus().WaitUntil([&] { return agent_.Bus().Notifications().size() > told; }));
  EXPECT_THAT(agent_.Bus().Notifications(),
              Contains("MRVServiceRecordStoresUpdated MRVServiceRecord").Times(2));
  EXPECT_THAT(StoreIDs(), ElementsAre("s1"));
  ExpectNoProblem();
}

TEST_F(DoctorOfSavedStores, NoCommandTakesAFileThatCannotBeReadForAListWithoutStores) {
  const TestSupport::StoreText store = WorkingStore("s1", "One");
  GiveStores({store});
  StartWithoutTheFile();
  const std::string document = agent_.Write("d.xml", TestSupport::DiscoveryDocument({store})).string();
  for (const std::vector<std::string>& command :
       std::vector<std::vector<std::string>>{{"list"},
                                             {"list", "--json"},
                                             {"show", "s1"},
                                             {"delete", "s1"},
                                             {"default-gateway", "--id", "s1", "Branch"},
                                             {"default-gateway", "--url", store.url, "Branch"},
                                             {"gateway", store.url},
                                             {"discover", document}}) {
    const SrctlRun run = Srctl(command);
    EXPECT_EQ(run.status, 1) << command.front();
    EXPECT_THAT(run.output, IsEmpty()) << command.front();
    EXPECT_EQ(run.errors,
              "srctl: The agent cannot read the file with your stores now; until it can, its list is empty "
              "and cannot be changed. What to do: srctl doctor\n")
        << command.front();
  }
}

TEST_F(DoctorOfSavedStores, AListThatCannotBeReadSaysNothingAboutWhoseAddressItIs) {
  const TestSupport::StoreText store = WorkingStore("s1", "One");
  GiveStores({store});
  StartWithoutTheFile();
  const SrctlRun run = Srctl({"location", store.url});
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.errors, HasSubstr("srctl: The agent cannot read the file with your stores now"));
}

TEST_F(DoctorOfSavedStores, AFileIsNotAddedToAListThatCannotBeRead) {
  GiveStores({WorkingStore("s1", "One")});
  StartWithoutTheFile();
  const SrctlRun run = Srctl({"open", "--window", OpenableFile("a.cr", {Store("s2", "Two")})});
  EXPECT_EQ(run.status, 8) << run.errors;
  EXPECT_THAT(run.output, IsEmpty());
  EXPECT_THAT(run.errors, testing::HasSubstr("What to do: srctl doctor\n"));
}

TEST_F(DoctorOfSavedStores, WhatIsNotKnownIsNotChanged) {
  GiveStores({WorkingStore("s1", "One")});
  StartWithoutTheFile();
  EXPECT_EQ(agent_.Bus().ServiceRecords("deleteStore", {"s1"}), false);
  EXPECT_EQ(agent_.Bus().ServiceRecords("setDefaultGatewayForStoreIDTo", {"s1", "Branch"}), false);
  GiveStores({WorkingStore("s2", "Two")});
  ASSERT_TRUE(agent_.Bus().WaitUntil([&] { return !agent_.Dialogs().empty(); }));
  EXPECT_EQ(agent_.Dialogs().front().first, "errorMessage");
  EXPECT_THAT(StoreIDs(), IsEmpty());
  const std::size_t told = agent_.Bus().Notifications().size();
  BringTheFileBack();
  EXPECT_EQ(agent_.Bus().ServiceRecords("deleteStore", {"s1"}), true) << "a change reads the file first";
  EXPECT_THAT(StoreIDs(), IsEmpty());
  EXPECT_TRUE(agent_.Bus().WaitUntil([&] { return agent_.Bus().Notifications().size() > told; }));
}

}  // namespace

#include "Files/PreferenceFile.h"
#include "MacConfiguration.h"
#include "platform/PreferencesFolder.h"
#include "support/FileSystemFaults.h"
#include "support/FullDisk.h"
#include "support/TestFiles.h"
#include "support/TraceCapture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <future>

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using TestSupport::FileSystemFaults;
using TestSupport::ReadFile;
using TestSupport::WriteFile;
using Wide = std::vector<std::wstring>;

std::wstring StringIn(const CMacConfiguration& configuration, const std::wstring& key) {
  std::wstring value;
  configuration.GetString(key, L"(none)", value);
  return value;
}

class GatheringTest : public testing::Test {
 protected:
  GatheringTest() {
    for (const bool perUser : {true, false}) {
      fs::remove_all(Agent::preferenceFile(perUser).parent_path());
      fs::create_directories(Agent::preferenceFile(perUser).parent_path());
    }
    configuration_.SetString(L"A", L"old");
    before_ = ReadFile(file_);
  }

  [[nodiscard]] std::wstring String(const std::wstring& key) const { return StringIn(configuration_, key); }
  [[nodiscard]] std::wstring StringOnAnotherThread(const std::wstring& key) const {
    return std::async(std::launch::async, [&] { return String(key); }).get();
  }

  const fs::path file_ = Agent::preferenceFile(true);
  const CMacConfiguration configuration_{true};
  std::string before_;
};

TEST_F(GatheringTest, WhatWasGatheredIsPutInPlaceByOneReplacement) {
  int flushes = 0;
  int renames = 0;
  {
    FileSystemFaults faults;
    faults.fsync = [&](int) { return ++flushes, 0; };
    faults.rename = [&](int) { return ++renames, 0; };
    const auto gathering = configuration_.Gather();
    configuration_.DeleteContainer(L"A");
    configuration_.CreateContainer(L"B");
    configuration_.SetUInt(L"B\\Number", 7);
    configuration_.SetBoolean(L"B\\Boolean", true);
    configuration_.SetList(L"B\\List", {L"x", L"y"});
    EXPECT_EQ(ReadFile(file_), before_);
    gathering->PutInPlace();
  }
  EXPECT_EQ(renames, 1);
  EXPECT_EQ(flushes, 2) << "the file and its folder";
  std::uint32_t number = 0;
  bool boolean = false;
  Wide list;
  EXPECT_EQ(String(L"A"), L"(none)");
  EXPECT_TRUE(configuration_.GetUInt(L"B\\Number", 0, number) && number == 7);
  EXPECT_TRUE(configuration_.GetBoolean(L"B\\Boolean", false, boolean) && boolean);
  EXPECT_TRUE(configuration_.GetList(L"B\\List", list));
  EXPECT_THAT(list, ElementsAre(L"x", L"y"));
}

TEST_F(GatheringTest, OnlyTheThreadThatGathersSeesWhatItHasChanged) {
  const auto gathering = configuration_.Gather();
  EXPECT_EQ(String(L"A"), L"old");
  for (const wchar_t* value : {L"new", L"newer"}) {
    configuration_.SetString(L"A", value);
    configuration_.SetString(L"B\\C\\D", value);
    EXPECT_EQ(String(L"A"), value);
    EXPECT_EQ(String(L"B\\C\\D"), value);
    EXPECT_EQ(StringOnAnotherThread(L"A"), L"old");
  }
  std::wstring name;
  EXPECT_TRUE(configuration_.EnumContainers(L"B", 0, name));
  EXPECT_EQ(name, L"C");
  configuration_.DeleteContainer(L"B\\C");
  EXPECT_FALSE(configuration_.EnumContainers(L"B", 0, name));
  gathering->PutInPlace();
  EXPECT_EQ(StringOnAnotherThread(L"A"), L"newer");
}

TEST_F(GatheringTest, WhatAnotherProgramWroteMeanwhileIsKept) {
  const auto gathering = configuration_.Gather();
  EXPECT_EQ(String(L"A"), L"old");
  configuration_.SetString(L"Ours\\B", L"ours");
  WriteFile(file_,
            "<plist><dict><key>A</key><string>theirs</string><key>Ours</key><dict><key>C</key>"
            "<string>theirs too</string></dict></dict></plist>");
  EXPECT_EQ(String(L"A"), L"old") << "one reading for everything";
  gathering->PutInPlace();
  EXPECT_EQ(String(L"A"), L"theirs");
  EXPECT_EQ(String(L"Ours\\B"), L"ours");
  EXPECT_EQ(String(L"Ours\\C"), L"theirs too");
}

TEST_F(GatheringTest, WhatAnotherThreadSetMeanwhileIsKept) {
  const auto gathering = configuration_.Gather();
  configuration_.SetString(L"A", L"new");
  std::async(std::launch::async, [&] { configuration_.SetString(L"B", L"another's"); }).get();
  EXPECT_EQ(String(L"B"), L"another's");
  gathering->PutInPlace();
  EXPECT_EQ(String(L"A"), L"new");
  EXPECT_EQ(String(L"B"), L"another's");
}

TEST_F(GatheringTest, WhatIsNotPutInPlaceIsDropped) {
  {
    const auto gathering = configuration_.Gather();
    configuration_.SetString(L"A", L"new");
  }
  EXPECT_EQ(ReadFile(file_), before_);
  EXPECT_EQ(String(L"A"), L"old");
  configuration_.SetString(L"A", L"at once");
  EXPECT_EQ(StringOnAnotherThread(L"A"), L"at once");
}

TEST_F(GatheringTest, GatheringGoesOnAfterItWasPutInPlace) {
  const auto gathering = configuration_.Gather();
  configuration_.SetString(L"A", L"new");
  EXPECT_EQ(String(L"A"), L"new");
  gathering->PutInPlace();
  WriteFile(file_, before_);
  configuration_.SetString(L"B", L"second");
  EXPECT_EQ(String(L"A"), L"old");
  EXPECT_EQ(String(L"B"), L"second");
  gathering->PutInPlace();
  EXPECT_EQ(StringOnAnotherThread(L"A"), L"old");
  EXPECT_EQ(StringOnAnotherThread(L"B"), L"second");
}

TEST_F(GatheringTest, AnInnerOneLeavesTheChangesToTheOuterOne) {
  const auto outer = configuration_.Gather();
  {
    const auto inner = configuration_.Gather();
    configuration_.SetString(L"A", L"new");
    inner->PutInPlace();
  }
  EXPECT_EQ(String(L"A"), L"new");
  EXPECT_EQ(ReadFile(file_), before_);
  outer->PutInPlace();
  EXPECT_EQ(StringOnAnotherThread(L"A"), L"new");
}

TEST_F(GatheringTest, TheScopesGatherApart) {
  const CMacConfiguration machine(false);
  const auto gathering = configuration_.Gather();
  configuration_.SetString(L"A", L"user");
  machine.SetString(L"A", L"machine");
  EXPECT_THAT(ReadFile(Agent::preferenceFile(false)), HasSubstr("machine"));
  EXPECT_EQ(ReadFile(file_), before_);
  EXPECT_EQ(StringIn(machine, L"A"), L"machine");
}

TEST_F(GatheringTest, TreesOfOneScopeGatherTogether) {
  const CMacConfiguration other(true);
  const auto gathering = configuration_.Gather();
  other.SetString(L"A", L"new");
  EXPECT_EQ(String(L"A"), L"new");
  EXPECT_EQ(ReadFile(file_), before_);
  gathering->PutInPlace();
  EXPECT_THAT(ReadFile(file_), HasSubstr("new"));
}

TEST_F(GatheringTest, GatheringsOfTheScopesMayEndInAnyOrder) {
  const CMacConfiguration machine(false);
  auto gathering = configuration_.Gather();
  const auto ofTheMachine = machine.Gather();
  gathering.reset();
  configuration_.SetString(L"A", L"at once");
  machine.SetString(L"A", L"gathered");
  EXPECT_THAT(ReadFile(file_), HasSubstr("at once"));
  EXPECT_FALSE(fs::exists(Agent::preferenceFile(false)));
}

TEST_F(GatheringTest, TheFileIsReadOnceHoweverMuchIsAsked) {
  int reads = 0;
  FileSystemFaults faults;
  faults.read = [&](int) { return ++reads, 0; };
  const auto gathering = configuration_.Gather();
  for (int i = 0; i < 5; ++i) EXPECT_EQ(String(L"A"), L"old");
  EXPECT_EQ(reads, 2) << "its content, and the end of it";
}

TEST_F(GatheringTest, ContainersAreNumberedTheSameWayInAnyOrderOfAskingAndAfterChanges) {
  const Wide names{L"c", L"a", L"d", L"b"};
  for (const std::wstring& name : names) {
    for (const std::wstring& inner : names) configuration_.CreateContainer(L"P\\" + name + L"\\" + inner);
    configuration_.SetString(L"P\\value of " + name, L"text");
  }
  const auto gathering = configuration_.Gather();
  std::wstring name;
  for (const std::uint32_t outer : {0U, 1U, 2U, 3U, 4U, 2U, 2U, 0U, 3U}) {
    ASSERT_EQ(configuration_.EnumContainers(L"P", outer, name), outer < 4) << outer;
    if (outer >= 4) continue;
    EXPECT_EQ(name, names[outer]);
    const std::wstring key = L"P\\" + name;
    for (const std::uint32_t inner : {0U, 1U, 2U, 3U, 4U, 5U, 1U}) {
      ASSERT_EQ(configuration_.EnumContainers(key, inner, name), inner < 4) << inner;
      if (inner >= 4) continue;
      EXPECT_EQ(name, names[inner]);
    }
  }
  configuration_.DeleteContainer(L"P\\c");
  EXPECT_TRUE(configuration_.EnumContainers(L"P", 1, name));
  EXPECT_EQ(name, L"d");
  configuration_.SetString(L"P\\a", L"no container");
  EXPECT_TRUE(configuration_.EnumContainers(L"P", 1, name));
  EXPECT_EQ(name, L"b");
  EXPECT_FALSE(configuration_.EnumContainers(L"P", 2, name));
}

TEST_F(GatheringTest, ChangesOfContainersThatAreMadeAndReplacedOnTheWayAreMadeInTheirOrder) {
  const auto gathering = configuration_.Gather();
  configuration_.SetString(L"P\\a", L"1");
  for (int i = 0; i < 40; ++i) configuration_.SetString(L"P\\n" + std::to_wstring(i), L"text");
  configuration_.SetString(L"P\\b\\c", L"2");
  configuration_.SetString(L"P", L"no container");
  configuration_.SetString(L"P\\b\\d", L"3");
  configuration_.SetString(L"\\b", L"4");
  configuration_.SetString(L"b", L"5");
  gathering->PutInPlace();
  EXPECT_EQ(String(L"P\\a"), L"(none)");
  EXPECT_EQ(String(L"P\\b\\c"), L"(none)");
  EXPECT_EQ(String(L"P\\b\\d"), L"3");
  EXPECT_EQ(String(L"\\b"), L"4");
  EXPECT_EQ(String(L"b"), L"5");
}

TEST_F(GatheringTest, NothingIsWrittenForAContainerThatIsThere) {
  configuration_.CreateContainer(L"B\\C");
  FileSystemFaults faults;
  faults.rename = [](int) { return EIO; };
  const std::uint64_t before = configuration_.Failures().writes;
  const auto gathering = configuration_.Gather();
  configuration_.CreateContainer(L"B\\C");
  configuration_.CreateContainer(L"A");
  gathering->PutInPlace();
  EXPECT_EQ(configuration_.Failures().writes, before);
  configuration_.CreateContainer(L"D");
  gathering->PutInPlace();
  EXPECT_EQ(configuration_.Failures().writes, before + 1);
}

TEST_F(GatheringTest, AReplacementThatFailsIsOneFailureAndOneLine) {
  const Config::StorageFailures before = configuration_.Failures();
  const TestSupport::TraceCapture trace;
  {
    const TestSupport::FullDisk full(10);
    const auto gathering = configuration_.Gather();
    for (const wchar_t* key : {L"A", L"B", L"C"}) configuration_.SetString(key, L"new");
    gathering->PutInPlace();
  }
  const Config::StorageFailures after = configuration_.Failures();
  EXPECT_EQ(after.writes, before.writes + 1);
  EXPECT_EQ(after.reads, before.reads);
  EXPECT_EQ(after.latest, file_.string() + ": File too large");
  const std::string line = "failed to write preferences to: " + file_.string() + "\n";
  const std::string text = trace.Text();
  EXPECT_THAT(text, HasSubstr(line));
  EXPECT_EQ(text.find(line), text.rfind(line));
  EXPECT_EQ(ReadFile(file_), before_);
  EXPECT_EQ(String(L"A"), L"old");
}

TEST_F(GatheringTest, AFileThatCannotBeReadIsOneFailureAndIsNotWritten) {
  const Config::StorageFailures before = configuration_.Failures();
  {
    FileSystemFaults faults;
    faults.read = [](int) { return EIO; };
    const auto gathering = configuration_.Gather();
    EXPECT_EQ(String(L"A"), L"(none)");
    EXPECT_EQ(String(L"A"), L"(none)");
    EXPECT_EQ(configuration_.Failures().reads, before.reads + 1);
    configuration_.SetString(L"A", L"new");
    configuration_.SetString(L"B", L"new");
    gathering->PutInPlace();
  }
  EXPECT_EQ(configuration_.Failures().reads, before.reads + 2);
  EXPECT_EQ(configuration_.Failures().writes, before.writes + 1);
  EXPECT_EQ(ReadFile(file_), before_);
}

TEST_F(GatheringTest, NobodyWhoReadsWaitsForAFlush) {
  std::vector<std::future<std::wstring>> seen;
  FileSystemFaults faults;
  faults.fsync = [&](int) {
    seen.push_back(std::async(std::launch::async, [&] {
      static_cast<void>(configuration_.Failures());
      return String(L"A");
    }));
    EXPECT_EQ(seen.back().wait_for(std::chrono::seconds(20)), std::future_status::ready);
    return 0;
  };
  configuration_.SetString(L"A", L"new");
  ASSERT_EQ(seen.size(), 2U);
  EXPECT_EQ(seen[0].get(), L"old") << "before the new file is in place";
  EXPECT_EQ(seen[1].get(), L"new") << "while its folder is flushed";
}

}  // namespace

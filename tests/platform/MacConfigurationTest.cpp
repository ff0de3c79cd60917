#include "Files/PreferenceFile.h"
#include "MacConfiguration.h"
#include "libs/Files/PropertyListFile.h"
#include "libs/PropertyList/PropertyList.h"
#include "platform/PreferencesFolder.h"
#include "support/FileSystemFaults.h"
#include "support/FullDisk.h"
#include "support/TestFiles.h"
#include "support/TraceCapture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <thread>

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using TestSupport::ReadFile;
using TestSupport::WriteFile;

class MacConfigurationTest : public testing::Test {
 protected:
  MacConfigurationTest() {
    for (const bool perUser : {true, false}) {
      fs::remove_all(Agent::preferenceFile(perUser).parent_path());
      fs::create_directories(Agent::preferenceFile(perUser).parent_path());
    }
  }

  void WriteTree(const std::string& content) { WriteFile(file_, "<plist>" + content + "</plist>"); }

  // Of the two files a rewritten one is another file, even with the same content.
  [[nodiscard]] ino_t FileNumber() const {
    struct stat status {};
    return ::stat(file_.c_str(), &status) == 0 ? status.st_ino : 0;
  }

  [[nodiscard]] std::vector<std::wstring> Containers(const std::wstring& key) const {
    std::vector<std::wstring> names;
    std::wstring name;
    for (std::uint32_t i = 0; configuration_.EnumContainers(key, i, name); ++i) names.push_back(name);
    return names;
  }

  [[nodiscard]] std::wstring String(const std::wstring& key) const {
    std::wstring value;
    configuration_.GetString(key, L"(none)", value);
    return value;
  }

  const fs::path file_ = Agent::preferenceFile(true);
  const CMacConfiguration configuration_{true};
};

TEST_F(MacConfigurationTest, EachScopeHasItsFileInItsApplicationSupportFolder) {
  EXPECT_EQ(Agent::preferenceFile(true),
            TestSupport::PreferencesFolder::Path() / "user/Morvane/ServiceRecords.plist");
  EXPECT_EQ(Agent::preferenceFile(false),
            TestSupport::PreferencesFolder::Path() / "machine/Morvane/ServiceRecords.plist");
}

TEST_F(MacConfigurationTest, TheScopesDoNotShareValues) {
  const CMacConfiguration machine(false);
  EXPECT_TRUE(machine.SetString(L"A", L"machine"));
  EXPECT_EQ(String(L"A"), L"(none)");
  EXPECT_TRUE(configuration_.SetString(L"A", L"user"));
  std::wstring value;
  EXPECT_TRUE(machine.GetString(L"A", L"", value));
  EXPECT_EQ(value, L"machine");
}

TEST_F(MacConfigurationTest, ValuesReadBackAsTheyWereSet) {
  std::uint32_t number = 0;
  bool boolean = false;
  EXPECT_TRUE(configuration_.SetUInt(L"A\\Number", 4294967295U));
  EXPECT_TRUE(configuration_.SetBoolean(L"A\\Boolean", true));
  EXPECT_TRUE(configuration_.SetString(L"A\\Text", L"\u00e4<&\r\n\U0001F600"));
  EXPECT_TRUE(configuration_.SetList(L"A\\List", {L"x", L"", L"x"}));
  EXPECT_TRUE(configuration_.GetUInt(L"A\\Number", 7, number));
  EXPECT_EQ(number, 4294967295U);
  EXPECT_TRUE(configuration_.GetBoolean(L"A\\Boolean", false, boolean));
  EXPECT_TRUE(boolean);
  EXPECT_EQ(String(L"A\\Text"), L"\u00e4<&\r\n\U0001F600");
  std::vector<std::wstring> list{L"old"};
  EXPECT_TRUE(configuration_.GetList(L"A\\List", list));
  EXPECT_THAT(list, ElementsAre(L"x", L"", L"x"));
}

TEST_F(MacConfigurationTest, WhatTheFileCannotHoldIsNotReadBackEither) {
  configuration_.SetString(L"A", L"a\x01\xFFFF\xD800\tb\U0001F600");
  configuration_.SetList(L"L", {L"\x02", L"c\x03"});
  // Once what was written last, once read from a file of other bytes.
  for (const char* const end : {"", "\n"}) {
    WriteFile(file_, ReadFile(file_) + end);
    EXPECT_EQ(String(L"A"), L"a\tb\U0001F600");
    std::vector<std::wstring> list;
    EXPECT_TRUE(configuration_.GetList(L"L", list));
    EXPECT_THAT(list, ElementsAre(L"", L"c"));
  }
}

TEST_F(MacConfigurationTest, GettersOfMissingKeysGiveTheDefault) {
  std::uint32_t number = 0;
  bool boolean = false;
  EXPECT_FALSE(configuration_.GetUInt(L"Missing\\Number", 7, number));
  EXPECT_EQ(number, 7U);
  EXPECT_FALSE(configuration_.GetBoolean(L"Missing\\Boolean", true, boolean));
  EXPECT_TRUE(boolean);
  EXPECT_EQ(String(L"Missing\\Text"), L"(none)");
  EXPECT_FALSE(fs::exists(file_));
}

TEST_F(MacConfigurationTest, NumbersAndBooleansReadAsEachOther) {
  WriteTree(
      "<dict><key>real</key><real>0.5</real><key>large</key><integer>4294967298</integer><key>yes</key><true/"
      ">"
      "<key>negative</key><integer>-1</integer><key>text</key><string>1</string></dict>");
  std::uint32_t number = 0;
  bool boolean = false;
  EXPECT_TRUE(configuration_.GetUInt(L"yes", 7, number));
  EXPECT_EQ(number, 1U);
  EXPECT_TRUE(configuration_.GetUInt(L"large", 7, number));
  EXPECT_EQ(number, 2U);
  EXPECT_TRUE(configuration_.GetUInt(L"negative", 7, number));
  EXPECT_EQ(number, 4294967295U);
  EXPECT_TRUE(configuration_.GetBoolean(L"large", false, boolean));
  EXPECT_TRUE(boolean);
  EXPECT_TRUE(configuration_.GetBoolean(L"real", false, boolean));
  EXPECT_TRUE(boolean);
  EXPECT_FALSE(configuration_.GetUInt(L"text", 7, number));
  EXPECT_FALSE(configuration_.GetBoolean(L"text", false, boolean));
  EXPECT_EQ(String(L"large"), L"(none)");
}

TEST_F(MacConfigurationTest, ABooleanReadsAsZeroOrOne) {
  std::uint32_t number = 7;
  configuration_.SetBoolean(L"A", false);
  EXPECT_TRUE(configuration_.GetUInt(L"A", 7, number));
  EXPECT_EQ(number, 0U);
  configuration_.SetBoolean(L"A", true);
  EXPECT_TRUE(configuration_.GetUInt(L"A", 7, number));
  EXPECT_EQ(number, 1U);
}

TEST_F(MacConfigurationTest, OneTrailingBackslashDoesNotCount) {
  configuration_.SetString(L"A\\B\\", L"one");
  EXPECT_EQ(String(L"A\\B"), L"one");
  configuration_.SetString(L"A\\C\\\\", L"two");
  EXPECT_EQ(String(L"A\\C\\\\"), L"two");
  EXPECT_THAT(Containers(L"A"), ElementsAre(L"C"));
  EXPECT_NE(ReadFile(file_).find("<key></key>"), std::string::npos);
}

TEST_F(MacConfigurationTest, EmptyComponentsAreNames) {
  configuration_.SetString(L"\\A", L"leading");
  configuration_.SetString(L"A\\\\B", L"between");
  configuration_.SetString(L"", L"root");
  EXPECT_EQ(String(L"\\"), L"root");
  EXPECT_EQ(String(L"A\\\\B"), L"between");
  EXPECT_EQ(String(L"\\A"), L"(none)");  // the root's empty name became a text
}

TEST_F(MacConfigurationTest, AValueInThePathBecomesAContainer) {
  configuration_.SetString(L"A", L"text");
  configuration_.SetString(L"A\\B", L"inner");
  EXPECT_EQ(String(L"A"), L"(none)");
  EXPECT_EQ(String(L"A\\B"), L"inner");
}

TEST_F(MacConfigurationTest, ReadingThroughAValueLeavesItInTheFile) {
  configuration_.SetString(L"A", L"text");
  EXPECT_EQ(String(L"A\\B"), L"(none)");
  EXPECT_EQ(String(L"A"), L"text");
}

TEST_F(MacConfigurationTest, SettingAValueReplacesAContainer) {
  configuration_.SetString(L"A\\B", L"inner");
  configuration_.SetUInt(L"A", 1);
  EXPECT_EQ(String(L"A\\B"), L"(none)");
}

TEST_F(MacConfigurationTest, CreatingAContainerWhereAnythingIsStoredDoesNotWrite) {
  configuration_.SetString(L"A", L"text");
  const ino_t before = FileNumber();
  EXPECT_TRUE(configuration_.CreateContainer(L"A"));
  EXPECT_EQ(FileNumber(), before);
  EXPECT_EQ(String(L"A"), L"text");
}

TEST_F(MacConfigurationTest, ACreatedContainerIsEmptyAndEnumerated) {
  EXPECT_TRUE(configuration_.CreateContainer(L"A\\B"));
  EXPECT_THAT(Containers(L"A"), ElementsAre(L"B"));
  EXPECT_THAT(Containers(L"A\\B"), IsEmpty());
}

TEST_F(MacConfigurationTest, DeletingRemovesContainersAndValues) {
  configuration_.SetString(L"A\\B\\C", L"inner");
  configuration_.SetString(L"A\\D", L"text");
  EXPECT_TRUE(configuration_.DeleteContainer(L"A\\B"));
  EXPECT_TRUE(configuration_.DeleteContainer(L"A\\D"));
  EXPECT_EQ(String(L"A\\B\\C"), L"(none)");
  EXPECT_EQ(String(L"A\\D"), L"(none)");
  EXPECT_THAT(Containers(L""), IsEmpty());
}

TEST_F(MacConfigurationTest, DeletingAMissingKeyRewritesTheFile) {
  configuration_.SetString(L"A", L"text");
  const ino_t before = FileNumber();
  EXPECT_TRUE(configuration_.DeleteContainer(L"B"));
  EXPECT_NE(FileNumber(), before);
  EXPECT_EQ(String(L"A"), L"text");
}

TEST_F(MacConfigurationTest, DeletingAMissingKeyCreatesAMissingFile) {
  ASSERT_FALSE(fs::exists(file_));
  EXPECT_TRUE(configuration_.DeleteContainer(L"A\\B"));
  EXPECT_TRUE(fs::exists(file_));
}

TEST_F(MacConfigurationTest, EnumerationSkipsValuesAndKeepsTheOrderOfTheFile) {
  configuration_.CreateContainer(L"P\\c");
  configuration_.SetString(L"P\\b", L"text");
  configuration_.CreateContainer(L"P\\a");
  std::wstring name = L"before";
  EXPECT_TRUE(configuration_.EnumContainers(L"P", 0, name));
  EXPECT_EQ(name, L"c");
  EXPECT_TRUE(configuration_.EnumContainers(L"P", 1, name));
  EXPECT_EQ(name, L"a");
  EXPECT_FALSE(configuration_.EnumContainers(L"P", 2, name));
  EXPECT_FALSE(configuration_.EnumContainers(L"P\\b", 0, name));
  EXPECT_FALSE(configuration_.EnumContainers(L"Missing", 0, name));
}

TEST_F(MacConfigurationTest, AListSkipsWhatIsNoText) {
  WriteTree(
      "<dict><key>list</key><array><string>x</string><integer>1</integer><string>y</string></array>"
      "<key>text</key><string>x</string><key>empty</key><array/></dict>");
  std::vector<std::wstring> list{L"old"};
  EXPECT_TRUE(configuration_.GetList(L"list", list));
  EXPECT_THAT(list, ElementsAre(L"x", L"y"));
  EXPECT_FALSE(configuration_.GetList(L"text", list));
  EXPECT_THAT(list, IsEmpty());
  EXPECT_TRUE(configuration_.GetList(L"empty", list));
}

TEST_F(MacConfigurationTest, ChangesOfAnotherProgramAreSeenByTheNextCall) {
  configuration_.SetString(L"A", L"ours");
  WriteTree("<dict><key>A</key><string>theirs</string></dict>");
  EXPECT_EQ(String(L"A"), L"theirs");
}

TEST_F(MacConfigurationTest, OtherValueKindsOfTheFileSurviveAWrite) {
  WriteTree(
      "<dict><key>date</key><date>2026-11-14T11:56:13Z</date><key>data</key><data>AAEC</data>"
      "<key>real</key><real>0.1</real></dict>");
  configuration_.SetString(L"A", L"text");
  const std::string written = ReadFile(file_);
  EXPECT_THAT(written, HasSubstr("<date>2026-11-14T11:56:13Z</date>"));
  EXPECT_THAT(written, HasSubstr("AAEC"));
  EXPECT_THAT(written, HasSubstr("<real>0.1</real>"));
}

TEST_F(MacConfigurationTest, AKeyTooDeepForTheFileIsRefusedWithoutHarmToTheRest) {
  configuration_.SetString(L"A", L"text");
  std::wstring deep;
  for (int i = 0; i < 50000; ++i) deep += L"d\\";
  const TestSupport::TraceCapture trace;
  EXPECT_TRUE(configuration_.SetString(deep + L"e", L"deep"));
  EXPECT_TRUE(configuration_.CreateContainer(deep + L"e"));
  EXPECT_EQ(String(deep + L"e"), L"(none)");
  EXPECT_EQ(String(L"A"), L"text");
  EXPECT_THAT(trace.Text(), HasSubstr("is too deep"));
}

TEST_F(MacConfigurationTest, TheDeepestKeyThatTheFileHoldsReadsBack) {
  std::wstring deep;
  for (std::size_t i = 2; i < PropertyList::kMaximumDepth; ++i) deep += L"d\\";
  configuration_.CreateContainer(deep + L"e");
  configuration_.SetString(deep + L"f", L"deep");
  EXPECT_EQ(String(deep + L"f"), L"deep");
  EXPECT_EQ(String(deep + L"f\\"), L"deep");
  configuration_.CreateContainer(deep + L"e\\g");
  EXPECT_THAT(Containers(deep + L"e"), IsEmpty());
  EXPECT_FALSE(fs::exists(file_.string() + ".damaged"));
}

TEST_F(MacConfigurationTest, ADamagedFileReadsAsEmptyAndIsKeptBesideWhenItIsReplaced) {
  WriteFile(file_, "<plist><dict>cut off");
  EXPECT_EQ(String(L"A"), L"(none)");
  EXPECT_EQ(ReadFile(file_), "<plist><dict>cut off");
  configuration_.SetString(L"A", L"text");
  EXPECT_EQ(String(L"A"), L"text");
  EXPECT_EQ(ReadFile(file_.string() + ".damaged"), "<plist><dict>cut off");
}

TEST_F(MacConfigurationTest, AFailedWriteIsLoggedAndLeavesTheOldFileWhole) {
  configuration_.SetString(L"A", L"old");
  const std::string before = ReadFile(file_);
  const TestSupport::TraceCapture trace;
  {
    const TestSupport::FullDisk full(10);
    EXPECT_TRUE(configuration_.SetString(L"A", L"new"));
  }
  EXPECT_EQ(ReadFile(file_), before);
  EXPECT_EQ(String(L"A"), L"old");
  EXPECT_THAT(trace.Text(), HasSubstr("failed to write preferences to: " + file_.string() + "\n"));
}

TEST_F(MacConfigurationTest, AWriteThatFailedIsCountedThoughTheSetterSaysTrue) {
  configuration_.SetString(L"A", L"old");
  const Config::StorageFailures before = configuration_.Failures();
  {
    const TestSupport::FullDisk full(10);
    EXPECT_TRUE(configuration_.SetString(L"A", L"new"));
    EXPECT_TRUE(configuration_.CreateContainer(L"B"));
    EXPECT_TRUE(configuration_.DeleteContainer(L"A"));
  }
  const Config::StorageFailures after = configuration_.Failures();
  EXPECT_EQ(after.writes, before.writes + 3);
  EXPECT_EQ(after.reads, before.reads);
  EXPECT_EQ(after.latest, file_.string() + ": File too large");
  configuration_.SetString(L"A", L"new");
  EXPECT_EQ(configuration_.Failures().writes, after.writes);
}

TEST_F(MacConfigurationTest, AFileThatCannotBeReadIsNotWrittenByAnySetter) {
  configuration_.SetString(L"A\\B", L"old");
  const std::string whole = ReadFile(file_);
  const Config::StorageFailures before = configuration_.Failures();
  {
    TestSupport::FileSystemFaults faults;
    faults.read = [](int) { return EIO; };
    EXPECT_EQ(String(L"A\\B"), L"(none)");
    EXPECT_EQ(configuration_.Failures().writes, before.writes);
    EXPECT_TRUE(configuration_.SetString(L"A", L"new"));
    EXPECT_TRUE(configuration_.SetUInt(L"A", 1));
    EXPECT_TRUE(configuration_.SetBoolean(L"A", true));
    EXPECT_TRUE(configuration_.SetList(L"A", {}));
    EXPECT_TRUE(configuration_.CreateContainer(L"A"));
    EXPECT_TRUE(configuration_.DeleteContainer(L"A"));
  }
  EXPECT_EQ(ReadFile(file_), whole);
  const Config::StorageFailures after = configuration_.Failures();
  EXPECT_EQ(after.reads, before.reads + 7);
  EXPECT_EQ(after.writes, before.writes + 6);
  EXPECT_EQ(after.latest, file_.string() + ": Input/output error");
  EXPECT_EQ(String(L"A\\B"), L"old");
}

TEST_F(MacConfigurationTest, TheScopesCountTheirFailuresApart) {
  const std::uint64_t before = CMacConfiguration(false).Failures().writes;
  {
    const TestSupport::FullDisk full(10);
    configuration_.SetString(L"A", L"new");
  }
  EXPECT_EQ(CMacConfiguration(false).Failures().writes, before);
}

TEST_F(MacConfigurationTest, ADamagedFileWithoutAFreeNameForItsCopyIsAFailureWithItsReason) {
  WriteFile(file_, "damaged");
  for (const std::string& name : Files::PropertyListFile(file_).DamagedNames()) {
    WriteFile(file_.parent_path() / name, name);
  }
  EXPECT_TRUE(configuration_.SetString(L"A", L"new"));
  EXPECT_EQ(ReadFile(file_), "damaged");
  EXPECT_EQ(configuration_.Failures().latest,
            file_.string() + ": the file is damaged, and there is no free name for its copy");
}

TEST_F(MacConfigurationTest, AMissingFolderFailsTheWriteWithARecord) {
  fs::remove_all(file_.parent_path());
  const TestSupport::TraceCapture trace;
  EXPECT_TRUE(configuration_.SetString(L"A", L"text"));
  EXPECT_EQ(String(L"A"), L"(none)");
  EXPECT_THAT(trace.Text(), HasSubstr("failed to write preferences to: "));
}

TEST_F(MacConfigurationTest, AKeyThatTheFileCannotHoldReachesNoOther) {
  configuration_.SetString(L"SR\\trusted\\Addr", L"https://mine");
  for (const wchar_t* container : {L"SR\\trusted\x01", L"SR\\trus\xFFFFted", L"SR\\tr\xD800usted"}) {
    const std::wstring key = container + std::wstring(L"\\Addr");
    const TestSupport::TraceCapture trace;
    EXPECT_EQ(String(key), L"(none)");
    EXPECT_TRUE(configuration_.SetString(key, L"https://evil"));
    EXPECT_TRUE(configuration_.DeleteContainer(container));
    EXPECT_EQ(String(key), L"(none)");
    EXPECT_THAT(trace.Text(), HasSubstr("is too deep or no text"));
  }
  EXPECT_EQ(String(L"SR\\trusted\\Addr"), L"https://mine");
}

TEST_F(MacConfigurationTest, TheFileIsForItsOwnerOnly) {
  const TestSupport::Umask open(0);
  configuration_.SetString(L"A", L"text");
  EXPECT_EQ(TestSupport::ModeOf(file_), 0600U);
}

TEST_F(MacConfigurationTest, ConcurrentSettersLoseNothing) {
  constexpr int kThreads = 4;
  constexpr int kValues = 10;
  {
    std::vector<std::jthread> threads;
    for (int thread = 0; thread < kThreads; ++thread) {
      threads.emplace_back([thread] {
        const CMacConfiguration own(thread % 2 == 0);
        for (int value = 0; value < kValues; ++value) {
          own.SetUInt(L"T" + std::to_wstring(thread) + L"\\V" + std::to_wstring(value), 1);
        }
      });
    }
  }
  for (int thread = 0; thread < kThreads; ++thread) {
    const CMacConfiguration own(thread % 2 == 0);
    for (int value = 0; value < kValues; ++value) {
      std::uint32_t number = 0;
      EXPECT_TRUE(own.GetUInt(L"T" + std::to_wstring(thread) + L"\\V" + std::to_wstring(value), 0, number));
    }
  }
}

TEST_F(MacConfigurationTest, SettingABinaryIsLoggedAndFails) {
  const TestSupport::TraceCapture trace;
  const std::uint8_t byte = 0;
  EXPECT_FALSE(configuration_.SetBinary(L"A", &byte, 1));
  EXPECT_THAT(trace.Text(),
              HasSubstr("CMacConfiguration::SetBinary is not relevant on Mac and should never be called\n"));
}

template <class Operation>
std::string TextThrownBy(Operation operation) {
  try {
    operation();
  } catch (const char* text) {
    return text;
  }
  return "(nothing)";
}

TEST_F(MacConfigurationTest, OperationsThatDoNotExistThrowTheirText) {
  std::uint32_t number = 0;
  std::wstring name;
  EXPECT_EQ(TextThrownBy([&] { configuration_.GetBinary(L"A", nullptr, number); }),
            "GetBinary needs to be finished");
  EXPECT_EQ(TextThrownBy([&] { configuration_.DeleteValue(L"A"); }), "Need code for DeleteValue");
  EXPECT_EQ(TextThrownBy([&] { configuration_.EnumValues(L"A", 0, name, number); }),
            "Need code for EnumValue");
  EXPECT_EQ(TextThrownBy([&] { configuration_.NotifyContainer(L"A", true, 0, nullptr, nullptr); }),
            "Need code for NotifyContainer");
  EXPECT_EQ(TextThrownBy([&] { configuration_.UnnotifyContainer(number); }),
            "Need code for UnnotifyContainer");
}

}  // namespace

#include "DbgTrace.h"
#include "libs/Files/FileDescriptor.h"
#include "libs/Files/UserDefaults.h"
#include "support/FileSystemFaults.h"
#include "support/FullDisk.h"
#include "support/TemporaryFolder.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <clocale>
#include <cstdlib>
#include <fstream>
#include <regex>
#include <sstream>
#include <thread>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr char kPrefix[] = R"(\[\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3}\] \[T0Unknown\] )";

// The trace is process-wide; CTest runs every case in a process of its own.
class TraceLog : public testing::Test {
 protected:
  TraceLog() {
    ::setenv("HOME", folder_.Path().c_str(), 1);
    ::setenv("XDG_CONFIG_HOME", folder_.Path().c_str(), 1);
    std::filesystem::create_directories(Log().parent_path());
  }
  ~TraceLog() override { SetLogLevel(0); }

  static void SetLogLevel(std::int64_t level) {
    ASSERT_FALSE(Files::UserDefaults::Standard().SetInteger("LogLevel", level));
    ServiceRecordUpdateLoggingFromPrefs();
  }

  [[nodiscard]] std::filesystem::path Log() const {
    return folder_.Path() / "Library/Logs/ServiceRecord.log";
  }
  [[nodiscard]] std::filesystem::path Backup() const { return Log().string() + "BUP"; }

  static std::string Content(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
  }
  [[nodiscard]] std::vector<std::string> Lines() const {
    std::istringstream stream(Content(Log()));
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
  }
  // The messages, without the prefixes; lines without a prefix whole.
  [[nodiscard]] std::vector<std::string> Messages() const {
    std::vector<std::string> messages = Lines();
    const std::regex prefix(std::string(kPrefix) + R"(\[[^\]]*:\d+\]  )");
    for (std::string& message : messages) message = std::regex_replace(message, prefix, "");
    return messages;
  }

  TestSupport::TemporaryFolder folder_;
};

TEST_F(TraceLog, WithoutAPreferenceNoFileIsMadeOrTouched) {
  ServiceRecordUpdateLoggingFromPrefs();
  SR_TRACE(2) << "a failure";
  CSRLog(2, "another");
  EXPECT_FALSE(std::filesystem::exists(Log()));
  EXPECT_FALSE(trace::IsEnabled());
}

TEST_F(TraceLog, WithThePreferenceOffAnOldLogStaysAsItIs) {
  std::ofstream(Log()) << "old log\n";
  SetLogLevel(0);
  SR_TRACE(2) << "a failure";
  EXPECT_EQ(Content(Log()), "old log\n");
  EXPECT_FALSE(std::filesystem::exists(Backup()));
}

TEST_F(TraceLog, TheFirstTimeOnTheOldLogIsKeptAndTheBannerWritten) {
  std::ofstream(Log()) << "old log\n";
  SetLogLevel(1);
  EXPECT_EQ(Content(Backup()), "old log\n");
  const auto lines = Lines();
  ASSERT_EQ(lines.size(), 4U);
  EXPECT_EQ(lines[0], "");
  EXPECT_TRUE(std::regex_match(
      lines[1],
      std::regex(R"( === Morvane Quillon logging started \d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3} ===)")))
      << lines[1];
  EXPECT_EQ(lines[2], "");
  EXPECT_TRUE(std::regex_match(
      lines[3], std::regex(std::string(kPrefix) +
                           R"(\[ServiceRecordMain\.cpp:157\]  Service Records Logging Active \(v.*\))")))
      << lines[3];
}

TEST_F(TraceLog, TurnedOnAtRunTimeTheBannerIsWrittenToo) {
  std::ofstream(Log()) << "old log\n";
  SR_TRACE(2) << "a failure before the preference was read";
  SetLogLevel(0);
  SetLogLevel(1);
  EXPECT_EQ(Content(Backup()), "old log\n");
  const auto lines = Lines();
  ASSERT_EQ(lines.size(), 4U);
  EXPECT_EQ(lines[0], "");
  EXPECT_THAT(lines[1], testing::StartsWith(" === Morvane Quillon logging started "));
  EXPECT_EQ(lines[2], "");
  EXPECT_THAT(lines[3], testing::HasSubstr("]  Service Records Logging Active (v"));
}

TEST_F(TraceLog, OffAndOnAgainAppendsWithoutASecondBannerOrBackup) {
  SetLogLevel(1);
  SetLogLevel(0);
  EXPECT_EQ(Messages().back(), "Logging Deactivated");
  SR_TRACE(2) << "nobody hears this";
  SetLogLevel(2);
  EXPECT_FALSE(std::filesystem::exists(Backup()));
  const auto messages = Messages();
  ASSERT_EQ(messages.size(), 6U);
  EXPECT_EQ(messages[4], "Logging Deactivated");
  EXPECT_THAT(messages[5], testing::StartsWith("Service Records Logging Active (v"));
}

TEST_F(TraceLog, ALineCarriesTheStatementsFileAndLine) {
  SetLogLevel(1);
  const int line = __LINE__ + 1;
  SR_TRACE(0) << "message " << L"wide " << std::uint64_t{42};
  const std::string expected =
      std::string(kPrefix) + R"(\[TraceLogTest\.cpp:)" + std::to_string(line) + R"(\]  message wide 42)";
  EXPECT_TRUE(std::regex_match(Lines().back(), std::regex(expected))) << Lines().back();
}

TEST_F(TraceLog, APathWithoutASlashPrintsWhole) {
  SetLogLevel(1);
  { trace::Statement(0, "Somewhere", 7) << "x"; }
  EXPECT_THAT(Lines().back(), testing::HasSubstr("] [Somewhere:7]  x"));
}

TEST_F(TraceLog, CoreStatementsReachTheFileAsUTF8InAnyLocale) {
  ASSERT_NE(std::setlocale(LC_ALL, "C"), nullptr);
  SetLogLevel(1);
  SR_TRACE(0) << L"Stör\u20AC\U0001F600" << " \xC3\xA9\xFF";
  SR_TRACE(0) << "later line";
  const auto messages = Messages();
  EXPECT_EQ(messages[messages.size() - 2], "Stör\u20AC\U0001F600 \xC3\xA9\xFF");
  EXPECT_EQ(messages.back(), "later line");
}

TEST_F(TraceLog, TheAgentsStatementsLoseWhatIsNotASCII) {
  SetLogLevel(1);
  CSRLog(0, "[+] %s (%@, %d)", "method", "Störe\u20AC", 5);
  EXPECT_EQ(Messages().back(), "[+] method (St?re?, 5)");
}

TEST_F(TraceLog, APercentSignInAnArgumentIsText) {
  SetLogLevel(1);
  CSRLog(0, "%@", "100%@ %s");
  EXPECT_EQ(Messages().back(), "100%@ %s");
}

TEST_F(TraceLog, TheLocationLibrarysMessagesAreTaken) {
  SetLogLevel(1);
  ServiceRecordWFLogFunc("store X: LAN");
  EXPECT_EQ(Messages().back(), "store X: LAN");
}

TEST_F(TraceLog, EnableTellsTheStateBefore) {
  SetLogLevel(1);
  EXPECT_TRUE(trace::Enable(false));
  EXPECT_FALSE(trace::Enable(true));
  EXPECT_TRUE(trace::IsEnabled());
}

TEST_F(TraceLog, TheTextOfARecordIsNotBuiltWhenNothingListens) {
  SetLogLevel(0);
  bool built = false;
  const auto build = [&built] {
    built = true;
    return "text";
  };
  SR_TRACE(2) << build();
  EXPECT_FALSE(built);
  SetLogLevel(1);
  SR_TRACE(2) << build();
  EXPECT_TRUE(built);
}

TEST_F(TraceLog, AFailedWriteDoesNotSilenceLaterLines) {
  SetLogLevel(1);
  trace::wdbg.setstate(std::ios::badbit);
  SR_TRACE(0) << "after a failure";
  EXPECT_EQ(Messages().back(), "after a failure");
}

TEST_F(TraceLog, LinesOfManyThreadsNeverInterleave) {
  SetLogLevel(1);
  std::vector<std::thread> threads;
  for (int number = 0; number < 8; ++number) {
    threads.emplace_back([number] {
      for (int i = 0; i < 100; ++i)
        SR_TRACE(0) << "<" << std::string(20, static_cast<char>('a' + number)) << ">";
    });
  }
  for (std::thread& thread : threads) thread.join();
  const auto messages = Messages();
  ASSERT_EQ(messages.size(), 804U);
  const std::regex whole("<([a-h])\\1{19}>");
  for (std::size_t i = 4; i < messages.size(); ++i)
    EXPECT_TRUE(std::regex_match(messages[i], whole)) << messages[i];
}

TEST_F(TraceLog, AStatementMayCallWhatTracesInTurn) {
  SetLogLevel(1);
  const auto inner = [] {
    SR_TRACE(0) << "inner";
    return "outer";
  };
  SR_TRACE(0) << inner();
  EXPECT_THAT(Content(Log()), testing::HasSubstr("inner\nouter\n"));
}

TEST_F(TraceLog, ALogAndABackupThatOthersCouldReadAreNarrowed) {
  using std::filesystem::perms;
  for (const auto& file : {Log(), Backup()}) {
    std::ofstream(file) << "old\n";
    std::filesystem::permissions(file, perms::owner_all | perms::group_all | perms::others_all);
  }
  SetLogLevel(1);
  EXPECT_EQ(std::filesystem::status(Log()).permissions(), perms::owner_read | perms::owner_write);
  EXPECT_EQ(std::filesystem::status(Backup()).permissions(), perms::owner_read | perms::owner_write);
}

TEST_F(TraceLog, OfLongerOldFilesNothingIsLeft) {
  std::ofstream(Log()) << std::string(10000, 'x') << "\n";
  std::ofstream(Backup()) << std::string(20000, 'y') << "\n";
  SetLogLevel(1);
  EXPECT_EQ(Content(Backup()), std::string(10000, 'x') + "\n");
  EXPECT_EQ(Lines().size(), 4U);
  EXPECT_THAT(Content(Log()), testing::Not(testing::HasSubstr("x")));
}

TEST_F(TraceLog, WhatAnotherProcessWritesIsLeftToIt) {
  const std::string content = "the other one's log\n";
  std::ofstream(Log()) << content;
  const Files::FileDescriptor other(::open(Log().c_str(), O_WRONLY | O_CLOEXEC));
  ASSERT_EQ(::flock(other.Get(), LOCK_EX | LOCK_NB), 0);
  SetLogLevel(1);
  SR_TRACE(2) << "a failure";
  EXPECT_EQ(Content(Log()), content);
  EXPECT_FALSE(std::filesystem::exists(Backup()));
}

TEST_F(TraceLog, TheLogIsHeldForAsLongAsItMayBeWritten) {
  SetLogLevel(1);
  SetLogLevel(0);
  const Files::FileDescriptor other(::open(Log().c_str(), O_WRONLY | O_CLOEXEC));
  EXPECT_NE(::flock(other.Get(), LOCK_EX | LOCK_NB), 0);
}

TEST_F(TraceLog, ALinkInThePlaceOfALogOrABackupIsNotFollowed) {
  const auto target = folder_.Path() / "target";
  std::ofstream(target) << "the user's\n";
  std::filesystem::create_symlink(target, Backup());
  std::ofstream(Log()) << "old log\n";
  SetLogLevel(1);
  EXPECT_EQ(Content(target), "the user's\n");
  SetLogLevel(0);
  std::filesystem::remove(Log());
  std::filesystem::create_symlink(target, Log());
  trace::NoTraceOption = false;
  trace::InitLog("ServiceRecord.log");
  EXPECT_EQ(Content(target), "the user's\n");
}

TEST_F(TraceLog, ALogThatSomebodyEmptiesGoesOnAtItsStart) {
  SetLogLevel(1);
  std::filesystem::resize_file(Log(), 0);
  SR_TRACE(0) << "next";
  EXPECT_THAT(Content(Log()), testing::StartsWith("["));
  EXPECT_EQ(Messages(), std::vector<std::string>{"next"});
}

TEST_F(TraceLog, AtSixtyFourMebibytesTheLogBecomesTheBackupAndBeginsAnew) {
  constexpr std::uintmax_t kMaximum = std::uintmax_t{64} << 20;
  std::ofstream(Log()) << "old log\n";
  SetLogLevel(1);
  std::filesystem::resize_file(Log(), kMaximum - 1000);
  SR_TRACE(0) << "fits";
  EXPECT_EQ(Content(Backup()), "old log\n");
  const auto inner = [] {
    SR_TRACE(0) << std::string(1000, 'z');
    return "is whole";
  };
  SR_TRACE(0) << "the last record " << inner();
  SR_TRACE(0) << "the first record";

  EXPECT_GE(std::filesystem::file_size(Backup()), kMaximum);
  std::ifstream backup(Backup());
  backup.seekg(-11, std::ios::end);
  const std::string end{std::istreambuf_iterator<char>(backup), {}};
  EXPECT_EQ(end, "z\nis whole\n");
  const auto messages = Messages();
  ASSERT_EQ(messages.size(), 4U);
  EXPECT_THAT(messages[1], testing::StartsWith(" === Morvane Quillon logging started "));
  EXPECT_EQ(messages[3], "the first record");
  const Files::FileDescriptor other(::open(Log().c_str(), O_WRONLY | O_CLOEXEC));
  EXPECT_NE(::flock(other.Get(), LOCK_EX | LOCK_NB), 0) << "it has its owner again";
}

TEST_F(TraceLog, AFullLogThatCannotBeRenamedBeginsAnewAllTheSame) {
  SetLogLevel(1);
  std::filesystem::create_directory(Backup());
  std::ofstream(Backup() / "file") << "x";
  std::filesystem::resize_file(Log(), std::uintmax_t{64} << 20);
  SR_TRACE(0) << "the last record";
  SR_TRACE(0) << "the first record";
  EXPECT_EQ(Messages().size(), 4U);
}

TEST_F(TraceLog, APipeInTheLogsPlaceHoldsNobody) {
  ASSERT_EQ(::mkfifo(Log().c_str(), 0600), 0);
  SetLogLevel(1);
  SR_TRACE(2) << "dropped";
  EXPECT_FALSE(std::filesystem::exists(Backup()));
}

TEST_F(TraceLog, AFileThatIsNoLongerTheLogOnceItIsLockedIsLeftAlone) {
  std::ofstream(Log()) << "another agent's\n";
  ASSERT_FALSE(Files::UserDefaults::Standard().SetInteger("LogLevel", 1));
  TestSupport::FileSystemFaults faults;
  faults.flock = [this](int /*descriptor*/) {
    std::filesystem::rename(Log(), Backup());
    return 0;
  };
  ServiceRecordUpdateLoggingFromPrefs();
  faults.flock = nullptr;
  SR_TRACE(2) << "dropped";
  EXPECT_EQ(Content(Backup()), "another agent's\n");
  EXPECT_FALSE(std::filesystem::exists(Log()));
}

TEST_F(TraceLog, AFolderInTheLogsPlaceLeavesTheBackupAlone) {
  std::filesystem::create_directory(Log());
  std::ofstream(Backup()) << "kept\n";
  SetLogLevel(1);
  EXPECT_EQ(Content(Backup()), "kept\n");
}

TEST_F(TraceLog, AfterAFullDiskEveryLineIsWholeAgain) {
  SetLogLevel(1);
  {
    const TestSupport::FullDisk full(std::filesystem::file_size(Log()) + 30);
    SR_TRACE(0) << "torn";
    SR_TRACE(0) << "lost";
  }
  SR_TRACE(0) << "whole";
  SR_TRACE(0) << "and another";
  const auto messages = Messages();
  EXPECT_EQ(messages[messages.size() - 2], "whole");
  EXPECT_EQ(messages.back(), "and another");
  EXPECT_THAT(Content(Log()), testing::Not(testing::HasSubstr("lost")));
}

TEST_F(TraceLog, AFormatThatDoesNotFitIsWrittenAsItStands) {
  SetLogLevel(1);
  CSRLog(0, "%s %@", "one");
  EXPECT_EQ(Messages().back(), "%s %@");
  CSRLog(0, "100%%@ %@", "x");
  EXPECT_EQ(Messages().back(), "100%@ x");
}

TEST_F(TraceLog, AMissingMessageOfTheLocationLibraryIsNoError) {
  SetLogLevel(1);
  ServiceRecordWFLogFunc(nullptr);
  EXPECT_EQ(Messages().back(), "(null)");
}

TEST_F(TraceLog, TheConsoleTakesTheLogWhereItIsAskedFor) {
  trace::ConsoleOption = true;
  testing::internal::CaptureStderr();
  SetLogLevel(1);
  SR_TRACE(0) << L"Stör";
  const std::string console = testing::internal::GetCapturedStderr();
  EXPECT_THAT(console, testing::HasSubstr(" === Morvane Quillon logging started "));
  EXPECT_THAT(console, testing::HasSubstr("]  Stör\n"));
  EXPECT_FALSE(std::filesystem::exists(Log()));
  trace::ConsoleOption = false;
}

// The console is attached on the way, and the file wins.
TEST_F(TraceLog, SwitchedOnAgainTheFileTakesTheLogThoughTheConsoleIsAskedFor) {
  SetLogLevel(1);
  trace::ConsoleOption = true;
  testing::internal::CaptureStderr();
  trace::Enable(false);
  trace::Enable(true);
  SR_TRACE(0) << "into the file";
  trace::ConsoleOption = false;
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  EXPECT_EQ(Messages().back(), "into the file");
}

TEST_F(TraceLog, EveryRecordLeavesItsLevelWithTheStream) {
  SetLogLevel(1);
  const auto level = [] { return trace::wdbg.iword(trace::GetLevelIndex()); };
  for (const std::uint32_t value : {2U, 0U, 3U}) {
    SR_TRACE(value) << "record";
    EXPECT_EQ(level(), static_cast<long>(value));
    trace::wdbg.iword(trace::GetLevelIndex()) = -1;
    CSRLog(value, "record");
    EXPECT_EQ(level(), static_cast<long>(value));
  }
  SR_TRACE(2) << "record";
  ServiceRecordWFLogFunc("the location library's are progress");
  EXPECT_EQ(level(), 0);
}

TEST_F(TraceLog, WithoutTheVerboseOptionOnlyFailuresAreWritten) {
  SetLogLevel(1);
  trace::VerboseOption = false;
  SR_TRACE(2) << "failure";
  CSRLog(0, "progress");
  SR_TRACE(0) << "more progress";
  EXPECT_FALSE(trace::IsEnabled());
  CSRLog(1, "warning");
  EXPECT_TRUE(trace::IsEnabled());
  const auto messages = Messages();
  EXPECT_EQ(messages[messages.size() - 2], "failure");
  EXPECT_EQ(messages.back(), "warning");
  trace::VerboseOption = true;
}

TEST_F(TraceLog, WithoutAHomeThePathStartsAtTheRoot) {
  ::unsetenv("HOME");
  const auto before = std::filesystem::current_path();
  std::filesystem::current_path(folder_.Path());
  SetLogLevel(1);  // nothing can be opened there, and nothing fails
  SR_TRACE(2) << "dropped";
  std::filesystem::current_path(before);
  EXPECT_THAT(Lines(), IsEmpty());
}

}  // namespace

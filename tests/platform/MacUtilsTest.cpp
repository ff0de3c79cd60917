#include "MacUtils.h"
#include "libs/DomLib/DocumentBounds.h"
#include "libs/Files/FileDescriptor.h"
#include "libs/Termination/TerminationEvent.h"
#include "libs/Text/TextHelpers.h"
#include "support/TemporaryFolder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace {

void WriteFile(const std::filesystem::path& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary) << bytes;
}

TEST(ReadUTF8File, AMissingFileLeavesTheOutputAsItWas) {
  std::wstring text = L"old";
  EXPECT_FALSE(util::ReadUTF8File(L"/nowhere/at/all", text));
  EXPECT_EQ(text, L"old");
}

TEST(ReadUTF8File, AnEmptyFileGivesEmptyText) {
  const TestSupport::TemporaryFolder folder;
  WriteFile(folder.Path() / "empty", "");
  std::wstring text = L"old";
  EXPECT_TRUE(util::ReadUTF8File((folder.Path() / "empty").wstring(), text));
  EXPECT_EQ(text, L"");
}

TEST(ReadUTF8File, AByteOrderMarkStays) {
  const TestSupport::TemporaryFolder folder;
  WriteFile(folder.Path() / "bom", "\xEF\xBB\xBFx");
  std::wstring text;
  EXPECT_TRUE(util::ReadUTF8File((folder.Path() / "bom").wstring(), text));
  EXPECT_EQ(text, L"\uFEFFx");
}

TEST(ReadUTF8File, ThePathMayHoldAnyCharacter) {
  const TestSupport::TemporaryFolder folder;
  WriteFile(folder.Path() / "Stör \"e.cr", "x");
  std::wstring text;
  EXPECT_TRUE(util::ReadUTF8File(util::widen(folder.Path().string()) + L"/Stör \"e.cr", text));
}

TEST(ReadUTF8File, APipeOrAFolderIsNoFile) {
  const TestSupport::TemporaryFolder folder;
  ASSERT_EQ(::mkfifo((folder.Path() / "pipe").c_str(), 0600), 0);
  std::wstring text = L"old";
  EXPECT_FALSE(util::ReadUTF8File((folder.Path() / "pipe").wstring(), text));
  EXPECT_FALSE(util::ReadUTF8File(folder.Path().wstring(), text));
  EXPECT_EQ(text, L"old");
}

// A process without a terminal gets the first one that it opens, and is ended when that hangs up.
TEST(ReadUTF8File, ATerminalIsNoFileAndDoesNotBecomeTheCallers) {
  const Files::FileDescriptor terminal(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC));
  ASSERT_TRUE(terminal);
  ASSERT_EQ(::unlockpt(terminal.Get()), 0);
  const std::wstring path = util::widen(::ptsname(terminal.Get()));
  const pid_t child = ::fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    ::setsid();
    std::wstring text;
    const bool read = util::ReadUTF8File(path, text);
    ::_exit(!read && ::open("/dev/tty", O_RDWR | O_CLOEXEC) < 0 && errno == ENXIO ? 0 : 1);
  }
  int status = -1;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
}

TEST(ReadUTF8File, ReadsNoMoreThanShowsThatAFileIsTooLarge) {
  const TestSupport::TemporaryFolder folder;
  WriteFile(folder.Path() / "large", "");
  std::filesystem::resize_file(folder.Path() / "large", DomLib::kMaximumDocumentBytes * 4);
  std::wstring text;
  EXPECT_TRUE(util::ReadUTF8File((folder.Path() / "large").wstring(), text));
  EXPECT_EQ(text.size(), DomLib::kMaximumDocumentBytes + 1);
}

TEST(WaitOneSecond, TakesASecond) {
  const auto start = std::chrono::steady_clock::now();
  EXPECT_TRUE(util::WaitOneSecond());
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
}

TEST(WaitOneSecondDeathTest, IsCutShortByTheEndOfTheProcess) {
  testing::FLAGS_gtest_death_test_style = "threadsafe";
  const auto waitAtTheEnd = [] {
    Termination::Request();
    std::_Exit(util::WaitOneSecond() ? 1 : 0);
  };
  EXPECT_EXIT(waitAtTheEnd(), testing::ExitedWithCode(0), "");
}

}  // namespace

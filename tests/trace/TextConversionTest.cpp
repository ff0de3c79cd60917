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
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <string>

using namespace std::string_literals;

namespace {

void WriteFile(const std::filesystem::path& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary) << bytes;
}

TEST(Narrow, WritesOneToFourBytes) {
  EXPECT_EQ(util::narrow(L"a\u007F"), "a\x7F");
  EXPECT_EQ(util::narrow(L"\u0080\u07FF"), "\xC2\x80\xDF\xBF");
  EXPECT_EQ(util::narrow(L"\u0800\uFFFF"), "\xE0\xA0\x80\xEF\xBF\xBF");
  EXPECT_EQ(util::narrow(L"\U00010000\U0010FFFF"), "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF");
}

TEST(Narrow, DropsALoneSurrogateOnly) {
  EXPECT_EQ(
      util::narrow(std::wstring{L'a', static_cast<wchar_t>(0xD800), L'b', static_cast<wchar_t>(0xDFFF)}),
      "ab");
}

TEST(Narrow, DropsNegativeAndTooLargeValues) {
  EXPECT_EQ(util::narrow(std::wstring{static_cast<wchar_t>(-1), L'x', static_cast<wchar_t>(0x110000)}), "x");
}

TEST(Narrow, KeepsNulCharacters) {
  EXPECT_EQ(util::narrow(L"a\0b"s), "a\0b"s);
}

TEST(NarrowedSize, IsThatOfTheBytes) {
  for (const std::uint32_t first : {0U, 0x7FU, 0x7FFU, 0xD7FFU, 0xDFFFU, 0xFFFFU, 0x10FFFFU, 0xFFFFFFFEU}) {
    const std::wstring text{L'a', static_cast<wchar_t>(first), static_cast<wchar_t>(first + 1)};
    EXPECT_EQ(util::NarrowedSize(text), util::narrow(text).size()) << first;
  }
  EXPECT_EQ(util::NarrowedSize(L""), 0U);
}

TEST(Widen, ReadsOneToFourBytes) {
  EXPECT_EQ(util::widen("a\xC2\x80\xE0\xA0\x80\xF4\x8F\xBF\xBF"), L"a\u0080\u0800\U0010FFFF");
}

TEST(Widen, DropsALeadByteWithoutItsContinuation) {
  EXPECT_EQ(util::widen("\xC3\x28"), L"(");
}

TEST(Widen, DropsAnOverlongZeroWhole) {
  EXPECT_EQ(util::widen("\xC0\x80"), L"");
}

TEST(Widen, DropsASequenceThatTheEndCutsOff) {
  EXPECT_EQ(util::widen("\xE2\x82"), L"");
  EXPECT_EQ(util::widen("x\xF0\x9F\x98"), L"x");
}

TEST(Widen, DropsSurrogatesOverlongsAndWhatIsOutOfRange) {
  EXPECT_EQ(util::widen("a\xED\xA0\x80z"), L"az");
  EXPECT_EQ(util::widen("a\xE0\x80\x80z"), L"az");
  EXPECT_EQ(util::widen("a\xF4\x90\x80\x80z"), L"az");
  EXPECT_EQ(util::widen("a\xF8\xFFz"), L"az");
}

TEST(Widen, ResumesAtTheVeryNextByte) {
  EXPECT_EQ(util::widen("\xE2\xC3\xA9"), L"\u00E9");
}

TEST(IsUTF8, TellsValidTextFromAnyOther) {
  EXPECT_TRUE(util::IsUTF8("St\xC3\xB6re"));
  EXPECT_TRUE(util::IsUTF8(""));
  EXPECT_FALSE(util::IsUTF8("St\xF6re"));
  EXPECT_FALSE(util::IsUTF8("\xED\xA0\x80"));
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

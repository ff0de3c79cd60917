#include "libs/Files/AtomicFile.h"
#include "support/FullDisk.h"
#include "support/TemporaryFolder.h"
#include "support/TestFiles.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using TestSupport::ModeOf;
using TestSupport::NamesIn;
using TestSupport::ReadFile;
using TestSupport::WriteFile;

class AtomicFileTest : public testing::Test {
 protected:
  TestSupport::TemporaryFolder folder_;
  const fs::path file_ = folder_.Path() / "file.plist";
  const std::vector<std::string> names_{"a", "b", "c"};
  std::error_code error_;
};

TEST_F(AtomicFileTest, ReplaceCreatesTheFileAndLeavesNothingElse) {
  EXPECT_FALSE(Files::AtomicFile::Replace(file_, "content"));
  EXPECT_EQ(Files::AtomicFile::Read(file_, error_), "content");
  EXPECT_THAT(NamesIn(folder_.Path()), ElementsAre("file.plist"));
}

TEST_F(AtomicFileTest, ANewFileIsForItsOwnerOnlyUnderAnyUmask) {
  for (const mode_t mask : {0U, 077U, 0777U}) {
    const TestSupport::Umask umask(mask);
    fs::remove(file_);
    EXPECT_FALSE(Files::AtomicFile::Replace(file_, "content"));
    EXPECT_EQ(ModeOf(file_), 0600U) << mask;
  }
}

TEST_F(AtomicFileTest, AHeldFileKeepsItsMode) {
  WriteFile(file_, "old");
  ASSERT_EQ(::chmod(file_.c_str(), 0640), 0);
  EXPECT_FALSE(Files::AtomicFile::Replace(file_, "new"));
  EXPECT_EQ(ModeOf(file_), 0640U);
}

TEST_F(AtomicFileTest, AFailedWriteLeavesTheOldFileWholeAndNoTemporary) {
  WriteFile(file_, "old");
  std::error_code error;
  {
    const TestSupport::FullDisk full(10);
    error = Files::AtomicFile::Replace(file_, std::string(100, 'n'));
  }
  EXPECT_TRUE(error);
  EXPECT_EQ(ReadFile(file_), "old");
  EXPECT_THAT(NamesIn(folder_.Path()), ElementsAre("file.plist"));
}

TEST_F(AtomicFileTest, AMissingFolderIsAnError) {
  EXPECT_EQ(Files::AtomicFile::Replace(folder_.Path() / "missing" / "file", "content"),
            std::errc::no_such_file_or_directory);
}

TEST_F(AtomicFileTest, ASymbolicLinkStaysAndItsTargetIsReplaced) {
  const fs::path target = folder_.Path() / "elsewhere" / "target";
  WriteFile(target, "old");
  fs::create_symlink("elsewhere/target", file_);
  EXPECT_FALSE(Files::AtomicFile::Replace(file_, "new"));
  EXPECT_TRUE(fs::is_symlink(file_));
  EXPECT_EQ(ReadFile(target), "new");
  EXPECT_THAT(NamesIn(folder_.Path()), ElementsAre("elsewhere", "file.plist"));
  EXPECT_THAT(NamesIn(folder_.Path() / "elsewhere"), ElementsAre("target"));
}

TEST_F(AtomicFileTest, TheTargetOfADanglingLinkIsCreated) {
  const fs::path target = folder_.Path() / "target";
  fs::create_symlink(target, file_);
  EXPECT_FALSE(Files::AtomicFile::Replace(file_, "new"));
  EXPECT_TRUE(fs::is_symlink(file_));
  EXPECT_EQ(ReadFile(target), "new");
}

TEST_F(AtomicFileTest, WhatIsNoRegularFileIsNeitherReadNorReplaced) {
  const fs::path pipe = folder_.Path() / "pipe";
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  fs::create_symlink(pipe, file_);
  EXPECT_TRUE(Files::AtomicFile::Replace(file_, "new"));
  EXPECT_TRUE(fs::is_fifo(pipe));
  EXPECT_EQ(Files::AtomicFile::Read(file_, error_), std::nullopt);
  EXPECT_EQ(Files::AtomicFile::Replace(folder_.Path(), "new"), std::errc::is_a_directory);
  EXPECT_EQ(Files::AtomicFile::Read(folder_.Path(), error_), std::nullopt);
  EXPECT_EQ(error_, std::errc::is_a_directory);
}

TEST_F(AtomicFileTest, AMissingFileIsToldFromOneThatCannotBeRead) {
  EXPECT_EQ(Files::AtomicFile::Read(file_, error_), std::nullopt);
  EXPECT_TRUE(Files::AtomicFile::IsMissing(error_));
  WriteFile(folder_.Path() / "a", "no folder");
  EXPECT_EQ(Files::AtomicFile::Read(folder_.Path() / "a" / "file.plist", error_), std::nullopt);
  EXPECT_TRUE(Files::AtomicFile::IsMissing(error_));
  fs::create_symlink("loop", folder_.Path() / "loop");
  EXPECT_EQ(Files::AtomicFile::Read(folder_.Path() / "loop", error_), std::nullopt);
  EXPECT_FALSE(Files::AtomicFile::IsMissing(error_));
}

TEST_F(AtomicFileTest, LargeContentIsReadWhole) {
  const std::string content(300000, 'x');
  EXPECT_FALSE(Files::AtomicFile::Replace(file_, content));
  EXPECT_EQ(Files::AtomicFile::Read(file_, error_), content);
}

TEST_F(AtomicFileTest, KeepBesideTakesTheFirstFreeNameAndReplacesNothing) {
  WriteFile(file_, "content");
  WriteFile(folder_.Path() / "a", "earlier");
  WriteFile(folder_.Path() / "b" / "in the way", "");
  EXPECT_FALSE(Files::AtomicFile::KeepBeside(file_, names_));
  EXPECT_EQ(ReadFile(file_), "content");
  EXPECT_EQ(ReadFile(folder_.Path() / "a"), "earlier");
  EXPECT_EQ(ReadFile(folder_.Path() / "c"), "content");
  EXPECT_THAT(NamesIn(folder_.Path()), ElementsAre("a", "b", "c", "file.plist"));
}

TEST_F(AtomicFileTest, AContentIsKeptBesideOnce) {
  WriteFile(file_, "content");
  EXPECT_FALSE(Files::AtomicFile::KeepBeside(file_, names_));
  EXPECT_FALSE(Files::AtomicFile::KeepBeside(file_, names_));
  EXPECT_THAT(NamesIn(folder_.Path()), ElementsAre("a", "file.plist"));
}

TEST_F(AtomicFileTest, WhereNoNameIsFreeNothingIsKept) {
  WriteFile(file_, "content");
  for (const std::string& name : names_) WriteFile(folder_.Path() / name, name);
  EXPECT_EQ(Files::AtomicFile::KeepBeside(file_, names_), std::errc::file_exists);
  for (const std::string& name : names_) EXPECT_EQ(ReadFile(folder_.Path() / name), name);
}

TEST_F(AtomicFileTest, TheCopyKeptBesideOutlivesTheReplacedFile) {
  WriteFile(file_, "old");
  EXPECT_FALSE(Files::AtomicFile::KeepBeside(file_, names_));
  EXPECT_FALSE(Files::AtomicFile::Replace(file_, "new"));
  EXPECT_EQ(ReadFile(file_), "new");
  EXPECT_EQ(ReadFile(folder_.Path() / "a"), "old");
}

TEST_F(AtomicFileTest, TheContentBehindALinkIsKeptBesideTheLink) {
  WriteFile(folder_.Path() / "elsewhere" / "target", "content");
  fs::create_symlink("elsewhere/target", file_);
  EXPECT_FALSE(Files::AtomicFile::KeepBeside(file_, names_));
  EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(folder_.Path() / "a")));
  EXPECT_EQ(ReadFile(folder_.Path() / "a"), "content");
}

TEST_F(AtomicFileTest, ASweepRemovesWhatAKilledWriterLeftAndNothingElse) {
  WriteFile(file_, "content");
  WriteFile(folder_.Path() / ".file.plist.tmp-aB3xYz", "left");
  WriteFile(folder_.Path() / ".file.plist.backup", "the user's");
  WriteFile(folder_.Path() / ".other.plist.tmp-aB3xYz", "of another file");
  WriteFile(folder_.Path() / ".file.plist.tmp-longer7", "of nobody");
  Files::AtomicFile::SweepTemporaries(file_);
  EXPECT_THAT(NamesIn(folder_.Path()), ElementsAre(".file.plist.backup", ".file.plist.tmp-longer7",
                                                   ".other.plist.tmp-aB3xYz", "file.plist"));
}

TEST_F(AtomicFileTest, ASweepLooksWhereALinkLeads) {
  WriteFile(folder_.Path() / "elsewhere" / ".target.tmp-aB3xYz", "left");
  fs::create_symlink("elsewhere/target", file_);
  Files::AtomicFile::SweepTemporaries(file_);
  EXPECT_THAT(NamesIn(folder_.Path() / "elsewhere"), ElementsAre());
}

TEST_F(AtomicFileTest, ASweepLeavesTheTemporaryOfALiveWriter) {
  const fs::path temporary = folder_.Path() / ".file.plist.tmp-aB3xYz";
  WriteFile(temporary, "being written");
  const int writer = ::open(temporary.c_str(), O_WRONLY | O_CLOEXEC);
  ASSERT_EQ(::flock(writer, LOCK_EX), 0);
  Files::AtomicFile::SweepTemporaries(file_);
  EXPECT_TRUE(fs::exists(temporary));
  ::close(writer);
  Files::AtomicFile::SweepTemporaries(file_);
  EXPECT_FALSE(fs::exists(temporary));
}

TEST_F(AtomicFileTest, AWriterThatIsKilledLeavesAWholeFile) {
  const std::string small(1000, 'a');
  const std::string large(4000000, 'b');
  ASSERT_FALSE(Files::AtomicFile::Replace(file_, small));
  const pid_t writer = ::fork();
  if (writer == 0) {
    while (true) {
      static_cast<void>(Files::AtomicFile::Replace(file_, large));
      static_cast<void>(Files::AtomicFile::Replace(file_, small));
    }
  }
  for (int seen = 0; seen < 50; ++seen) {
    const auto content = Files::AtomicFile::Read(file_, error_);
    EXPECT_TRUE(content == small || content == large);
  }
  ::kill(writer, SIGKILL);
  ::waitpid(writer, nullptr, 0);
  const std::string content = ReadFile(file_);
  EXPECT_TRUE(content == small || content == large);
  Files::AtomicFile::SweepTemporaries(file_);
  EXPECT_THAT(NamesIn(folder_.Path()), ElementsAre("file.plist"));
}

}  // namespace

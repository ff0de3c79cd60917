#include "libs/Files/AtomicFile.h"
#include "support/FileSystemFaults.h"
#include "support/FullDisk.h"
#include "support/OrdinaryUser.h"
#include "support/TemporaryFolder.h"
#include "support/TestFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using TestSupport::FileSystemFaults;
using TestSupport::ModeOf;
using TestSupport::NamesIn;
using TestSupport::ReadFile;
using TestSupport::WriteFile;

class AtomicFileFaultsTest : public testing::Test {
 protected:
  AtomicFileFaultsTest() { WriteFile(file_, "old"); }

  // What a sweep of another process does to a temporary that is not locked yet.
  void SweepTemporaries() const {
    for (const std::string& name : NamesIn(folder_.Path())) {
      if (name.starts_with(".file.plist.tmp-")) fs::remove(folder_.Path() / name);
    }
  }

  TestSupport::TemporaryFolder folder_;
  const fs::path file_ = folder_.Path() / "file.plist";
  const std::vector<std::string> names_{"a", "b"};
};

int FailForFolders(int descriptor) {
  struct stat status {};
  return ::fstat(descriptor, &status) == 0 && S_ISDIR(status.st_mode) ? EIO : 0;
}

TEST_F(AtomicFileFaultsTest, AFolderThatCannotBeOpenedFailsWhileNothingHasChanged) {
  std::error_code error;
  {
    const TestSupport::OrdinaryUser user(folder_.Path());
    ASSERT_EQ(::chmod(folder_.Path().c_str(), 0300), 0);
    error = Files::AtomicFile::Replace(file_, "new");
    ASSERT_EQ(::chmod(folder_.Path().c_str(), 0700), 0);
  }
  EXPECT_EQ(error, std::errc::permission_denied);
  EXPECT_EQ(ReadFile(file_), "old");
  EXPECT_THAT(NamesIn(folder_.Path()), ElementsAre("file.plist"));
}

TEST_F(AtomicFileFaultsTest, AReplacedFileIsNoFailureWhenTheFolderCannotBeFlushed) {
  FileSystemFaults faults;
  faults.fsync = FailForFolders;
  EXPECT_FALSE(Files::AtomicFile::Replace(file_, "new"));
  EXPECT_EQ(ReadFile(file_), "new");
}

TEST_F(AtomicFileFaultsTest, ContentThatCannotBeFlushedIsAFailureAndTheOldFileStays) {
  FileSystemFaults faults;
  faults.fsync = [](int) { return EIO; };
  EXPECT_EQ(Files::AtomicFile::Replace(file_, "new"), std::errc::io_error);
  EXPECT_EQ(ReadFile(file_), "old");
  EXPECT_THAT(NamesIn(folder_.Path()), ElementsAre("file.plist"));
}

TEST_F(AtomicFileFaultsTest, AFileSystemThatCountsNoNamesIsWrittenTo) {
  FileSystemFaults faults;
  faults.fstat = [](struct stat& status) { status.st_nlink = 0; };
  EXPECT_FALSE(Files::AtomicFile::Replace(file_, "new"));
  EXPECT_EQ(ReadFile(file_), "new");
  EXPECT_THAT(NamesIn(folder_.Path()), ElementsAre("file.plist"));
}

TEST_F(AtomicFileFaultsTest, AWriterWhoseTemporaryIsSweptTakesAnother) {
  FileSystemFaults faults;
  int rounds = 0;
  faults.flock = [&](int) {
    if (rounds++ == 0) SweepTemporaries();
    return 0;
  };
  EXPECT_FALSE(Files::AtomicFile::Replace(file_, "new"));
  EXPECT_EQ(rounds, 2);
  EXPECT_EQ(ReadFile(file_), "new");
}

TEST_F(AtomicFileFaultsTest, AWriterWhoseTemporariesAreAllSweptGivesUp) {
  FileSystemFaults faults;
  int rounds = 0;
  faults.flock = [&](int) {
    if (rounds++ < 1000) SweepTemporaries();
    return 0;
  };
  EXPECT_EQ(Files::AtomicFile::Replace(file_, "new"), std::errc::resource_unavailable_try_again);
  EXPECT_EQ(ReadFile(file_), "old");
  EXPECT_THAT(NamesIn(folder_.Path()), ElementsAre("file.plist"));
}

TEST_F(AtomicFileFaultsTest, AWriterThatDoesNotKnowItsTemporariesAgainLeavesNone) {
  FileSystemFaults faults;
  faults.fstat = [](struct stat& status) { ++status.st_ino; };
  EXPECT_EQ(Files::AtomicFile::Replace(file_, "new"), std::errc::resource_unavailable_try_again);
  EXPECT_EQ(ReadFile(file_), "old");
  EXPECT_THAT(NamesIn(folder_.Path()), ElementsAre("file.plist"));
}

TEST_F(AtomicFileFaultsTest, WithoutSecondNamesACopyIsKeptBeside) {
  WriteFile(folder_.Path() / "a", "earlier");
  FileSystemFaults faults;
  faults.linkat = [](int) { return EPERM; };
  EXPECT_FALSE(Files::AtomicFile::KeepBeside(file_, names_));
  EXPECT_EQ(ReadFile(folder_.Path() / "a"), "earlier");
  EXPECT_EQ(ReadFile(folder_.Path() / "b"), "old");
  EXPECT_EQ(ModeOf(folder_.Path() / "b"), 0600U);
}

TEST_F(AtomicFileFaultsTest, ACopyThatCannotBeWrittenWholeIsNotLeftBehind) {
  FileSystemFaults faults;
  faults.linkat = [](int) { return EPERM; };
  std::error_code error;
  {
    const TestSupport::FullDisk full(2);
    error = Files::AtomicFile::KeepBeside(file_, names_);
  }
  EXPECT_EQ(error, std::errc::file_too_large);
  faults.fsync = [](int) { return EIO; };
  EXPECT_EQ(Files::AtomicFile::KeepBeside(file_, names_), std::errc::io_error);
  EXPECT_THAT(NamesIn(folder_.Path()), ElementsAre("file.plist"));
}

TEST_F(AtomicFileFaultsTest, AFileSystemThatRefusesModesIsWrittenTo) {
  ASSERT_EQ(::chmod(file_.c_str(), 0640), 0);
  for (const int refusal : {EPERM, ENOTSUP}) {
    FileSystemFaults faults;
    faults.fchmod = [refusal](int) { return refusal; };
    EXPECT_FALSE(Files::AtomicFile::Replace(file_, std::to_string(refusal)));
    EXPECT_EQ(ReadFile(file_), std::to_string(refusal));
    ASSERT_EQ(::chmod(file_.c_str(), 0640), 0);
  }
}

TEST_F(AtomicFileFaultsTest, AFileOfAnotherSizeThanTheFileSystemTellsIsReadWhole) {
  for (const std::size_t size : {0U, 1U, 4095U, 4096U, 4097U, 20000U}) {
    const std::string content(size, 'x');
    WriteFile(file_, content);
    for (const off_t told : {0, 1, 4096, 20000, 100000}) {
      FileSystemFaults faults;
      faults.fstat = [told](struct stat& status) { status.st_size = told; };
      std::error_code error;
      EXPECT_EQ(Files::AtomicFile::Read(file_, error), content) << told;
    }
  }
}

TEST_F(AtomicFileFaultsTest, AModeThatIsRightIsNotSetAgain) {
  ASSERT_EQ(::chmod(file_.c_str(), 0600), 0);
  FileSystemFaults faults;
  faults.fchmod = [](int) { return EIO; };
  EXPECT_FALSE(Files::AtomicFile::Replace(file_, "new"));
  EXPECT_EQ(ModeOf(file_), 0600U);
}

TEST_F(AtomicFileFaultsTest, AnyOtherFailureToSetTheModeIsAFailure) {
  ASSERT_EQ(::chmod(file_.c_str(), 0640), 0);
  FileSystemFaults faults;
  faults.fchmod = [](int) { return EIO; };
  EXPECT_EQ(Files::AtomicFile::Replace(file_, "new"), std::errc::io_error);
  EXPECT_EQ(ReadFile(file_), "old");
}

}  // namespace

#include "libs/Files/PropertyListFile.h"
#include "support/FileSystemFaults.h"
#include "support/FullDisk.h"
#include "support/NoFreeDescriptor.h"
#include "support/OrdinaryUser.h"
#include "support/TemporaryFolder.h"
#include "support/TestFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ctime>

namespace {

namespace fs = std::filesystem;
using PropertyList::Dictionary;
using testing::ElementsAre;
using TestSupport::ModeOf;
using TestSupport::NamesIn;
using TestSupport::ReadFile;
using TestSupport::WriteFile;

class PropertyListFileTest : public testing::Test {
 protected:
  // What the file holds by now; who saves, replaces what was loaded last.
  const Dictionary& Load() {
    reading_ = file_.Load(reading_);
    return *reading_.Root();
  }
  std::error_code Save(const Dictionary& root) { return file_.Save(reading_, root); }

  TestSupport::TemporaryFolder folder_;
  const Files::PropertyListFile file_{folder_.Path() / "file.plist"};
  Files::PropertyListFile::Reading reading_;
};

TEST_F(PropertyListFileTest, WhatIsSavedIsLoaded) {
  const Dictionary root{{"name", "value"}};
  EXPECT_FALSE(Save(root));
  EXPECT_EQ(Load(), root);
  EXPECT_THAT(NamesIn(folder_.Path()), ElementsAre("file.plist"));
}

TEST_F(PropertyListFileTest, AMissingOrEmptyFileIsAnEmptyDictionaryAndNoDamage) {
  EXPECT_TRUE(Load().Empty());
  EXPECT_FALSE(Save({}));
  WriteFile(file_.Path(), "");
  EXPECT_TRUE(Load().Empty());
  EXPECT_FALSE(Save({}));
  EXPECT_FALSE(fs::exists(folder_.Path() / file_.DamagedNames().front()));
}

TEST_F(PropertyListFileTest, ADamagedFileIsKeptBesideBeforeItIsReplaced) {
  const std::vector<std::string> contents{"garbage", "<plist><array/></plist>", "<plist><dict><key>a</key>",
                                          std::string(3, '\0')};
  for (std::size_t i = 0; i < contents.size(); ++i) {
    WriteFile(file_.Path(), contents[i]);
    EXPECT_TRUE(Load().Empty());
    EXPECT_EQ(ReadFile(file_.Path()), contents[i]);
    EXPECT_FALSE(Save({{"name", "value"}}));
    EXPECT_EQ(Load(), (Dictionary{{"name", "value"}}));
    EXPECT_EQ(ReadFile(folder_.Path() / file_.DamagedNames()[i]), contents[i]);
  }
}

TEST_F(PropertyListFileTest, TenDamagedFilesAreKeptAndTheEleventhIsNotReplaced) {
  const std::vector<std::string> names = file_.DamagedNames();
  EXPECT_EQ(names.size(), 10U);
  EXPECT_EQ(names.front(), "file.plist.damaged");
  EXPECT_EQ(names.back(), "file.plist.damaged.9");
  for (const std::string& name : names) {
    WriteFile(file_.Path(), "damaged " + name);
    EXPECT_TRUE(Load().Empty());
    EXPECT_FALSE(Save({}));
  }
  WriteFile(file_.Path(), "one too many");
  EXPECT_TRUE(Load().Empty());
  EXPECT_EQ(Save({}), std::errc::file_exists);
  EXPECT_EQ(ReadFile(file_.Path()), "one too many");
  for (const std::string& name : names) EXPECT_EQ(ReadFile(folder_.Path() / name), "damaged " + name);
}

TEST_F(PropertyListFileTest, ADamagedFileThatCannotBeReplacedYetIsKeptOnce) {
  WriteFile(file_.Path(), "garbage");
  for (int attempt = 0; attempt < 3; ++attempt) {
    EXPECT_TRUE(Load().Empty());
    const TestSupport::FullDisk full(20);
    EXPECT_TRUE(Save({{"name", "value"}}));
  }
  EXPECT_THAT(NamesIn(folder_.Path()), ElementsAre("file.plist", "file.plist.damaged"));
}

TEST_F(PropertyListFileTest, AFileThatCannotBeReadForAPassingReasonIsNotReplacedUntilItIsReadAgain) {
  const Dictionary held{{"name", "held"}};
  ASSERT_FALSE(Save(held));
  {
    const TestSupport::NoFreeDescriptor none;
    EXPECT_TRUE(Load().Empty());
  }
  EXPECT_EQ(Save({{"name", "new"}}), std::errc::too_many_files_open);
  EXPECT_THAT(NamesIn(folder_.Path()), ElementsAre("file.plist"));
  EXPECT_EQ(Load(), held);
  EXPECT_FALSE(Save({{"name", "new"}}));
}

TEST_F(PropertyListFileTest, AReadErrorIsNeitherDamageNorAMissingFile) {
  const Dictionary held{{"name", "held"}};
  ASSERT_FALSE(Save(held));
  {
    TestSupport::FileSystemFaults faults;
    faults.read = [](int) { return EIO; };
    EXPECT_TRUE(Load().Empty());
  }
  EXPECT_EQ(reading_.Failure(), std::errc::io_error);
  EXPECT_EQ(Save({{"name", "new"}}), std::errc::io_error);
  EXPECT_THAT(NamesIn(folder_.Path()), ElementsAre("file.plist"));
  EXPECT_EQ(Load(), held);
  EXPECT_FALSE(reading_.Failure());
}

TEST_F(PropertyListFileTest, WhatIsNoFileIsNeitherDamagedNorReplaced) {
  fs::create_directories(file_.Path());
  EXPECT_TRUE(Load().Empty());
  EXPECT_EQ(Save({}), std::errc::is_a_directory);
  fs::remove(file_.Path());
  fs::create_symlink("file.plist", file_.Path());
  EXPECT_TRUE(Load().Empty());
  EXPECT_EQ(Save({}), std::errc::too_many_symbolic_link_levels);
  EXPECT_THAT(NamesIn(folder_.Path()), ElementsAre("file.plist"));
}

TEST_F(PropertyListFileTest, AFileInAFoldersPlaceMeansThatThereIsNoFile) {
  WriteFile(file_.Path(), "no folder");
  const Files::PropertyListFile below(file_.Path() / "file.plist");
  const Files::PropertyListFile::Reading reading = below.Load();
  EXPECT_TRUE(reading.Root()->Empty());
  EXPECT_FALSE(reading.Failure());
}

TEST_F(PropertyListFileTest, AFileOfTheUsersOwnGetsTheRightToBeReadOnce) {
  const TestSupport::OrdinaryUser user(folder_.Path());
  const Dictionary held{{"name", "held"}};
  ASSERT_FALSE(Save(held));
  ASSERT_EQ(::chmod(file_.Path().c_str(), 0), 0);
  EXPECT_EQ(Load(), held);
  EXPECT_EQ(ModeOf(file_.Path()), 0400U);
  EXPECT_FALSE(Save({{"name", "new"}}));
  ASSERT_EQ(::chmod(file_.Path().c_str(), 0), 0);
  EXPECT_TRUE(Load().Empty());
  EXPECT_EQ(Save({}), std::errc::permission_denied);
  EXPECT_EQ(ModeOf(file_.Path()), 0U);
  EXPECT_THAT(NamesIn(folder_.Path()), ElementsAre("file.plist"));
}

TEST_F(PropertyListFileTest, AFileOfSomebodyElseThatMayNotBeReadIsNotReplaced) {
  if (::geteuid() != 0) GTEST_SKIP() << "only root has files of two users";
  WriteFile(file_.Path(), "somebody else's");
  ASSERT_EQ(::chmod(file_.Path().c_str(), 0), 0);
  {
    const TestSupport::OrdinaryUser user(folder_.Path());
    EXPECT_TRUE(Load().Empty());
    EXPECT_EQ(Save({}), std::errc::permission_denied);
  }
  EXPECT_EQ(ModeOf(file_.Path()), 0U);
  EXPECT_EQ(ReadFile(file_.Path()), "somebody else's");
}

TEST_F(PropertyListFileTest, AFailedSaveLeavesTheOldFileWhole) {
  const Dictionary old{{"name", "old"}};
  ASSERT_FALSE(Save(old));
  std::error_code error;
  {
    const TestSupport::FullDisk full(20);
    error = Save({{"name", "new"}});
  }
  EXPECT_TRUE(error);
  EXPECT_EQ(Load(), old);
}

class KnownFileTest : public PropertyListFileTest {
 protected:
  KnownFileTest() {
    faults_.read = [this](int) { return ++reads_, 0; };
    faults_.fstat = [this](struct stat& status) {
      status.st_mtim.tv_sec = status.st_ctim.tv_sec = ::time(nullptr) - age_;
      status.st_mtim.tv_nsec = status.st_ctim.tv_nsec = 0;
      if (change_) change_(status);
    };
    WriteTree("one");
  }

  // In place, and always of the same size.
  void WriteTree(const std::string& value) {
    WriteFile(file_.Path(), "<plist><dict><key>name</key><string>" + value + "</string></dict></plist>");
  }
  [[nodiscard]] std::string Loaded() { return *Load().Find("name")->As<std::string>(); }
  [[nodiscard]] bool IsRead() {
    const int before = reads_;
    Load();
    return reads_ != before;
  }

  // What the file system tells of the file: both changes were that many seconds ago.
  time_t age_ = 0;
  std::function<void(struct stat&)> change_;
  int reads_ = 0;
  TestSupport::FileSystemFaults faults_;
};

TEST_F(KnownFileTest, AFileThatChangedASecondAgoIsReadOnce) {
  const time_t changed = ::time(nullptr) - 1;
  change_ = [changed](struct stat& status) { status.st_mtim.tv_sec = status.st_ctim.tv_sec = changed; };
  EXPECT_TRUE(IsRead());
  for (int i = 0; i < 3; ++i) EXPECT_FALSE(IsRead());
  EXPECT_EQ(Loaded(), "one");
}

TEST_F(KnownFileTest, AChangeThatDoesNotShowInTheFilesStateIsSeenWithinItsFirstSecond) {
  const time_t changed = ::time(nullptr);
  for (timespec stat::*time : {&stat::st_mtim, &stat::st_ctim}) {
    change_ = [&](struct stat& status) {
      status.st_mtim.tv_sec = status.st_ctim.tv_sec = changed - 10;
      (status.*time).tv_sec = ::time(nullptr);
      (status.*time).tv_nsec = 500'000'000;
    };
    for (const char* value : {"one", "two"}) {
      WriteTree(value);
      EXPECT_EQ(Loaded(), value);
    }
  }
}

TEST_F(KnownFileTest, WhateverOfTheFilesStateIsAnotherItIsReadAgain) {
  const time_t changed = ::time(nullptr) - 10;
  const auto settled = [changed](struct stat& status) {
    status.st_mtim.tv_sec = status.st_ctim.tv_sec = changed;
  };
  const std::function<void(struct stat&)> differences[] = {
      [](struct stat& status) { ++status.st_dev; },
      [](struct stat& status) { ++status.st_ino; },
      [](struct stat& status) { --status.st_size; },
      [](struct stat& status) { ++status.st_size; },
      [](struct stat& status) { status.st_mtim.tv_nsec = 1; },
      [](struct stat& status) { --status.st_mtim.tv_sec; },
      [](struct stat& status) { status.st_ctim.tv_nsec = 1; },
      [](struct stat& status) { --status.st_ctim.tv_sec; }};
  for (const auto& difference : differences) {
    change_ = settled;
    WriteTree("one");
    static_cast<void>(Load());
    WriteTree("two");
    ASSERT_EQ(Loaded(), "one") << "as long as nothing shows";
    change_ = [&](struct stat& status) { settled(status), difference(status); };
    EXPECT_EQ(Loaded(), "two");
  }
}

TEST_F(KnownFileTest, BytesThatWereParsedOrWrittenLastAreNotParsedAgain) {
  const auto tree = [this] { return Load(), reading_.Root(); };
  const auto first = tree();
  WriteTree("one");
  EXPECT_EQ(tree(), first) << "the same tree, not one of the same content";
  WriteTree("two");
  EXPECT_NE(tree(), first);
  ASSERT_FALSE(Save({{"name", "three"}}));
  const auto saved = reading_.Root();
  EXPECT_EQ(tree(), saved);
  EXPECT_EQ(Loaded(), "three");
}

TEST_F(KnownFileTest, AChangeOfWhatAnotherProgramWroteIsWrittenWhole) {
  const Dictionary inner{{"a", 1}, {"b", 2}};
  WriteFile(file_.Path(),
            " " + PropertyList::Write(Dictionary{{"inner", inner}, {"other", "text"}}).substr(39));
  for (int value = 5; value < 8; ++value) {
    Dictionary tree = Load();
    tree.Find("inner")->As<Dictionary>()->Set("a", value);
    ASSERT_FALSE(Save(tree));
    EXPECT_EQ(ReadFile(file_.Path()), PropertyList::Write(tree));
  }
}

TEST_F(KnownFileTest, ADamagedFileIsKnownAgainAsDamaged) {
  WriteFile(file_.Path(), "garbage");
  age_ = 10;
  for (int i = 0; i < 3; ++i) EXPECT_TRUE(Load().Empty());
  ASSERT_FALSE(Save({{"name", "value"}}));
  EXPECT_EQ(ReadFile(folder_.Path() / file_.DamagedNames().front()), "garbage");
}

TEST_F(KnownFileTest, AFileThatIsGoneIsEmptyAndOneThatComesBackIsRead) {
  age_ = 10;
  EXPECT_EQ(Loaded(), "one");
  fs::remove(file_.Path());
  EXPECT_TRUE(Load().Empty());
  WriteTree("two");
  EXPECT_EQ(Loaded(), "two");
}

TEST_F(PropertyListFileTest, SweepingRemovesWhatAKilledWriterLeft) {
  WriteFile(folder_.Path() / ".file.plist.tmp-aB3xYz", "left");
  file_.SweepTemporaries();
  EXPECT_THAT(NamesIn(folder_.Path()), ElementsAre());
}

}  // namespace

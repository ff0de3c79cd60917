#include "PropertyListFile.h"
#include "platform/FileSystemFaults.h"
#include "platform/FullDisk.h"
#include "platform/NoFreeDescriptor.h"
#include "platform/OrdinaryUser.h"
#include "platform/TestFiles.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;
using PropertyList::Dictionary;
using testing::ElementsAre;
using testsupport::ModeOf;
using testsupport::NamesIn;
using testsupport::ReadFile;
using testsupport::WriteFile;

class PropertyListFileTest : public testing::Test {
 protected:
  testsupport::TemporaryFolder folder_;
  PropertyListFile file_{folder_.Path() / "file.plist"};
};

TEST_F(PropertyListFileTest, WhatIsSavedIsLoaded) {
  const Dictionary root{{"name", "value"}};
  EXPECT_FALSE(file_.Save(root));
  EXPECT_EQ(file_.Load(), root);
  EXPECT_THAT(NamesIn(folder_.Path()), ElementsAre("file.plist"));
}

TEST_F(PropertyListFileTest, AMissingOrEmptyFileIsAnEmptyDictionaryAndNoDamage) {
  EXPECT_TRUE(file_.Load().Empty());
  EXPECT_FALSE(file_.Save({}));
  WriteFile(file_.Path(), "");
  EXPECT_TRUE(file_.Load().Empty());
  EXPECT_FALSE(file_.Save({}));
  EXPECT_FALSE(fs::exists(folder_.Path() / file_.DamagedNames().front()));
}

TEST_F(PropertyListFileTest, ADamagedFileIsKeptBesideBeforeItIsReplaced) {
  const std::vector<std::string> contents{"garbage", "<plist><array/></plist>", "<plist><dict><key>a</key>",
                                          std::string(3, '\0')};
  for (std::size_t i = 0; i < contents.size(); ++i) {
    WriteFile(file_.Path(), contents[i]);
    EXPECT_TRUE(file_.Load().Empty());
    EXPECT_EQ(ReadFile(file_.Path()), contents[i]);
    EXPECT_FALSE(file_.Save({{"name", "value"}}));
    EXPECT_EQ(file_.Load(), (Dictionary{{"name", "value"}}));
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
    EXPECT_TRUE(file_.Load().Empty());
    EXPECT_FALSE(file_.Save({}));
  }
  WriteFile(file_.Path(), "one too many");
  EXPECT_TRUE(file_.Load().Empty());
  EXPECT_EQ(file_.Save({}), std::errc::file_exists);
  EXPECT_EQ(ReadFile(file_.Path()), "one too many");
  for (const std::string& name : names) EXPECT_EQ(ReadFile(folder_.Path() / name), "damaged " + name);
}

TEST_F(PropertyListFileTest, ADamagedFileThatCannotBeReplacedYetIsKeptOnce) {
  WriteFile(file_.Path(), "garbage");
  for (int attempt = 0; attempt < 3; ++attempt) {
    EXPECT_TRUE(file_.Load().Empty());
    const testsupport::FullDisk full(20);
    EXPECT_TRUE(file_.Save({{"name", "value"}}));
  }
  EXPECT_THAT(NamesIn(folder_.Path()), ElementsAre("file.plist", "file.plist.damaged"));
}

TEST_F(PropertyListFileTest, AFileThatCannotBeReadForAPassingReasonIsNotReplacedUntilItIsReadAgain) {
  const Dictionary held{{"name", "held"}};
  ASSERT_FALSE(file_.Save(held));
  {
    const testsupport::NoFreeDescriptor none;
    EXPECT_TRUE(file_.Load().Empty());
  }
  EXPECT_EQ(file_.Save({{"name", "new"}}), std::errc::too_many_files_open);
  EXPECT_THAT(NamesIn(folder_.Path()), ElementsAre("file.plist"));
  EXPECT_EQ(file_.Load(), held);
  EXPECT_FALSE(file_.Save({{"name", "new"}}));
}

TEST_F(PropertyListFileTest, AReadErrorIsNeitherDamageNorAMissingFile) {
  const Dictionary held{{"name", "held"}};
  ASSERT_FALSE(file_.Save(held));
  {
    testsupport::FileSystemFaults faults;
    faults.read = [](int) { return EIO; };
    EXPECT_TRUE(file_.Load().Empty());
  }
  EXPECT_EQ(file_.ReadFailure(), std::errc::io_error);
  EXPECT_EQ(file_.Save({{"name", "new"}}), std::errc::io_error);
  EXPECT_THAT(NamesIn(folder_.Path()), ElementsAre("file.plist"));
  EXPECT_EQ(file_.Load(), held);
  EXPECT_FALSE(file_.ReadFailure());
}

TEST_F(PropertyListFileTest, WhatIsNoFileIsNeitherDamagedNorReplaced) {
  fs::create_directories(file_.Path());
  EXPECT_TRUE(file_.Load().Empty());
  EXPECT_EQ(file_.Save({}), std::errc::is_a_directory);
  fs::remove(file_.Path());
  fs::create_symlink("file.plist", file_.Path());
  EXPECT_TRUE(file_.Load().Empty());
  EXPECT_EQ(file_.Save({}), std::errc::too_many_symbolic_link_levels);
  EXPECT_THAT(NamesIn(folder_.Path()), ElementsAre("file.plist"));
}

TEST_F(PropertyListFileTest, AFileInAFoldersPlaceMeansThatThereIsNoFile) {
  WriteFile(file_.Path(), "no folder");
  PropertyListFile below(file_.Path() / "file.plist");
  EXPECT_TRUE(below.Load().Empty());
  EXPECT_FALSE(below.ReadFailure());
}

TEST_F(PropertyListFileTest, AFileOfTheUsersOwnGetsTheRightToBeReadOnce) {
  const testsupport::OrdinaryUser user(folder_.Path());
  const Dictionary held{{"name", "held"}};
  ASSERT_FALSE(file_.Save(held));
  ASSERT_EQ(::chmod(file_.Path().c_str(), 0), 0);
  EXPECT_EQ(file_.Load(), held);
  EXPECT_EQ(ModeOf(file_.Path()), 0400U);
  EXPECT_FALSE(file_.Save({{"name", "new"}}));
  ASSERT_EQ(::chmod(file_.Path().c_str(), 0), 0);
  EXPECT_TRUE(file_.Load().Empty());
  EXPECT_EQ(file_.Save({}), std::errc::permission_denied);
  EXPECT_EQ(ModeOf(file_.Path()), 0U);
  EXPECT_THAT(NamesIn(folder_.Path()), ElementsAre("file.plist"));
}

TEST_F(PropertyListFileTest, AFileOfSomebodyElseThatMayNotBeReadIsNotReplaced) {
  if (::geteuid() != 0) GTEST_SKIP() << "only root has files of two users";
  WriteFile(file_.Path(), "somebody else's");
  ASSERT_EQ(::chmod(file_.Path().c_str(), 0), 0);
  {
    const testsupport::OrdinaryUser user(folder_.Path());
    EXPECT_TRUE(file_.Load().Empty());
    EXPECT_EQ(file_.Save({}), std::errc::permission_denied);
  }
  EXPECT_EQ(ModeOf(file_.Path()), 0U);
  EXPECT_EQ(ReadFile(file_.Path()), "somebody else's");
}

TEST_F(PropertyListFileTest, AFailedSaveLeavesTheOldFileWhole) {
  const Dictionary old{{"name", "old"}};
  ASSERT_FALSE(file_.Save(old));
  std::error_code error;
  {
    const testsupport::FullDisk full(20);
    error = file_.Save({{"name", "new"}});
  }
  EXPECT_TRUE(error);
  EXPECT_EQ(file_.Load(), old);
}

TEST_F(PropertyListFileTest, SweepingRemovesWhatAKilledWriterLeft) {
  WriteFile(folder_.Path() / ".file.plist.tmp-aB3xYz", "left");
  file_.SweepTemporaries();
  EXPECT_THAT(NamesIn(folder_.Path()), ElementsAre());
}

}  // namespace

#include "PropertyListFile.h"
#include "platform/FullDisk.h"
#include "platform/NoFreeDescriptor.h"
#include "platform/TestFiles.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;
using PropertyList::Dictionary;
using testing::ElementsAre;
using testsupport::NamesIn;
using testsupport::ReadFile;
using testsupport::WriteFile;

class PropertyListFileTest : public testing::Test {
 protected:
  testsupport::TemporaryFolder folder_;
  PropertyListFile file_{folder_.Path() / "file.plist"};
  const fs::path damaged_ = folder_.Path() / "file.plist.damaged";
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
  EXPECT_FALSE(fs::exists(damaged_));
}

TEST_F(PropertyListFileTest, ADamagedFileIsKeptBesideBeforeItIsReplaced) {
  for (const std::string& content : {std::string("garbage"), std::string("<plist><array/></plist>"),
                                     std::string("<plist><dict><key>a</key>"), std::string(3, '\0')}) {
    WriteFile(file_.Path(), content);
    EXPECT_TRUE(file_.Load().Empty());
    EXPECT_EQ(ReadFile(file_.Path()), content);
    EXPECT_FALSE(file_.Save({{"name", "value"}}));
    EXPECT_EQ(file_.Load(), (Dictionary{{"name", "value"}}));
    EXPECT_EQ(ReadFile(damaged_), content);
  }
}

TEST_F(PropertyListFileTest, ADamagedFileThatCannotBeKeptIsNotReplaced) {
  WriteFile(file_.Path(), "garbage");
  fs::create_directories(damaged_ / "in the way");
  EXPECT_TRUE(file_.Load().Empty());
  EXPECT_TRUE(file_.Save({{"name", "value"}}));
  EXPECT_EQ(ReadFile(file_.Path()), "garbage");
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

TEST_F(PropertyListFileTest, SweepingCoversTheCopyOfADamagedFileToo) {
  WriteFile(folder_.Path() / ".file.plist.tmp-aB3xYz", "left");
  WriteFile(folder_.Path() / ".file.plist.damaged.tmp-aB3xYz", "left");
  file_.SweepTemporaries();
  EXPECT_THAT(NamesIn(folder_.Path()), ElementsAre());
}

}  // namespace

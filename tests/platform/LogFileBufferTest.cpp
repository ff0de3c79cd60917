#include "Files/LogFileBuffer.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>

namespace {

TEST(LogFileBuffer, LogAndBackupAreReadableByTheirOwnerOnlyUnderAnyUmask) {
  using std::filesystem::perms;
  for (const mode_t mask : {mode_t{0}, mode_t{0777}}) {
    const TestSupport::TemporaryFolder folder;
    const std::string log = folder.Path() / "log";
    ::umask(mask);
    Agent::LogFileBuffer buffer;
    ASSERT_TRUE(buffer.OpenKeepingBackup(log));
    ASSERT_TRUE(buffer.OpenKeepingBackup(log));
    EXPECT_EQ(std::filesystem::status(log).permissions(), perms::owner_read | perms::owner_write);
    EXPECT_EQ(std::filesystem::status(log + "BUP").permissions(), perms::owner_read | perms::owner_write);
  }
}

}  // namespace

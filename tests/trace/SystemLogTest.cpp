#include "libs/Trace/SystemLog.h"
#include "support/CapturedSyslog.h"
#include "support/EnvironmentVariable.h"

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <syslog.h>
#include <unistd.h>

#include <cstring>

namespace {

int g_openlogOptions = 0;
bool g_systemHasALog = true;

}  // namespace

// The C library's, in its place.
extern "C" void openlog(const char* /*identifier*/, int options, int /*facility*/) {
  g_openlogOptions = options;
}
extern "C" int access(const char* path, int mode) noexcept {
  if (std::strcmp(path, "/dev/log") == 0) return g_systemHasALog ? 0 : -1;
  return static_cast<int>(::syscall(SYS_access, path, mode));
}

namespace {

using testing::ElementsAre;

// The system log is opened once in a process; CTest runs every case in a process of its own.
class SystemLogTest : public testing::Test {
 protected:
  // Whether what is logged goes to standard error too, in an agent with this value of JOURNAL_STREAM.
  static bool GoesToStandardErrorToo(const std::optional<std::string>& journal) {
    const TestSupport::EnvironmentVariable variable("JOURNAL_STREAM", journal);
    trace::SystemLog::Error("a line");
    return (g_openlogOptions & LOG_PERROR) != 0;
  }
  static std::string StandardError() {
    struct stat status {};
    ::fstat(STDERR_FILENO, &status);
    return std::to_string(status.st_dev) + ":" + std::to_string(status.st_ino);
  }

  TestSupport::CapturedSyslog syslog_;
};

TEST_F(SystemLogTest, ALineGoesToStandardErrorToo) {
  EXPECT_TRUE(GoesToStandardErrorToo(std::nullopt));
  EXPECT_THAT(syslog_.TakeLines(), ElementsAre("a line"));
}

TEST_F(SystemLogTest, AJournalDoesNotGetALineTwice) {
  EXPECT_FALSE(GoesToStandardErrorToo(StandardError()));
  EXPECT_THAT(syslog_.TakeLines(), ElementsAre("a line"));
}

TEST_F(SystemLogTest, AJournalThatIsNotStandardErrorIsNoReasonToKeepALineBack) {
  EXPECT_TRUE(GoesToStandardErrorToo(StandardError() + "0"));
}

TEST_F(SystemLogTest, AJournalGetsALineWhereThereIsNoOtherLog) {
  g_systemHasALog = false;
  EXPECT_TRUE(GoesToStandardErrorToo(StandardError()));
}

TEST_F(SystemLogTest, ALineHoldsNoLineBreakOfOthers) {
  trace::SystemLog::Error("one\ntwo");
  EXPECT_THAT(syslog_.TakeLines(), ElementsAre("one two"));
}

}  // namespace

#include "libs/Trace/SystemLog.h"

#include "libs/Text/LogText.h"

#include <sys/stat.h>
#include <syslog.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>

namespace trace::SystemLog {
namespace {

constinit std::atomic<Log*> g_log = nullptr;

// The service manager names the file, so that nobody has to write each line twice.
bool StandardErrorIsTheJournal() {
  const char* const journal = std::getenv("JOURNAL_STREAM");
  struct stat status {};
  return journal != nullptr && ::fstat(STDERR_FILENO, &status) == 0 &&
         journal == std::to_string(status.st_dev) + ":" + std::to_string(status.st_ino);
}

void WriteToSystemLog(const std::string& line) {
  static const bool opened = [] {
    const bool isWrittenTwice = StandardErrorIsTheJournal() && ::access("/dev/log", W_OK) == 0;
    ::openlog("ServiceRecords", LOG_PID | (isWrittenTwice ? 0 : LOG_PERROR), LOG_USER);
    return true;
  }();
  static_cast<void>(opened);
  ::syslog(LOG_ERR, "%s", util::LogText::Line(line).c_str());
}

}  // namespace

void Error(const std::string& line) {
  Log* const log = g_log;
  if (log != nullptr) return log->Write(line);
  WriteToSystemLog(line);
}

Log* LeadTo(Log* log) {
  return g_log.exchange(log);
}

}  // namespace trace::SystemLog

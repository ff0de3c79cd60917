#include "SRLib/SystemLog.h"

#include <syslog.h>
#include <unistd.h>

namespace SystemLog {

void Error(const std::string& line) {
  static const bool opened = [] {
    const bool hasSystemLog = ::access("/dev/log", W_OK) == 0;
    ::openlog("ServiceRecords", LOG_PID | (hasSystemLog ? 0 : LOG_PERROR), LOG_USER);
    return true;
  }();
  static_cast<void>(opened);
  ::syslog(LOG_ERR, "%s", line.c_str());
}

}  // namespace SystemLog

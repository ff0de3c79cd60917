#include "support/CapturedSyslog.h"

#include <array>
#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <utility>

namespace {

std::mutex g_syslogMutex;
std::vector<std::string> g_syslogLines;

__attribute__((format(printf, 1, 0))) void Keep(const char* format, va_list arguments) {
  std::array<char, 4096> line{};
  std::vsnprintf(line.data(), line.size(), format, arguments);
  const std::lock_guard lock(g_syslogMutex);
  g_syslogLines.emplace_back(line.data());
}

}  // namespace

#define EXPORTED extern "C" __attribute__((visibility("default")))

EXPORTED __attribute__((format(printf, 2, 3))) void syslog(int /*priority*/, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  Keep(format, arguments);
  va_end(arguments);
}

// What an optimised build calls instead.
EXPORTED __attribute__((format(printf, 3, 4))) void __syslog_chk(int /*priority*/, int /*flag*/,
                                                                 const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  Keep(format, arguments);
  va_end(arguments);
}

namespace CapturedSyslog {

std::vector<std::string> TakeLines() {
  const std::lock_guard lock(g_syslogMutex);
  return std::exchange(g_syslogLines, {});
}

}  // namespace CapturedSyslog

#include "support/CapturedSyslog.h"

#include <array>
#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <stdexcept>
#include <utility>

namespace {

// The lines of the object that there is; guarded by the mutex, as they are.
std::mutex g_mutex;
std::vector<std::string>* g_lines = nullptr;

__attribute__((format(printf, 1, 0))) void Keep(const char* format, va_list arguments) {
  std::array<char, 4096> line{};
  std::vsnprintf(line.data(), line.size(), format, arguments);
  const std::lock_guard lock(g_mutex);
  if (g_lines != nullptr) g_lines->emplace_back(line.data());
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

namespace TestSupport {

CapturedSyslog::CapturedSyslog() {
  const std::lock_guard lock(g_mutex);
  if (g_lines != nullptr) throw std::logic_error("the system log is captured already");
  g_lines = &lines_;
}

CapturedSyslog::~CapturedSyslog() {
  const std::lock_guard lock(g_mutex);
  g_lines = nullptr;
}

std::vector<std::string> CapturedSyslog::TakeLines() {
  const std::lock_guard lock(g_mutex);
  return std::exchange(lines_, {});
}

}  // namespace TestSupport

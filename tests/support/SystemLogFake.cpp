#include "support/SystemLogFake.h"

#include "libs/Trace/SystemLog.h"

#include <mutex>
#include <utility>

namespace {

std::mutex g_mutex;
std::vector<std::string> g_lines;

}  // namespace

namespace SystemLog {

void Error(const std::string& line) {
  const std::lock_guard lock(g_mutex);
  g_lines.push_back(line);
}

}  // namespace SystemLog

namespace SystemLogFake {

std::vector<std::string> TakeLines() {
  const std::lock_guard lock(g_mutex);
  return std::exchange(g_lines, {});
}

}  // namespace SystemLogFake

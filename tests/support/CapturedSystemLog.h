#pragma once

#include "libs/Trace/SystemLog.h"

#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace TestSupport {

// Takes the place of the system log as long as it lives. Any thread.
class CapturedSystemLog : private trace::SystemLog::Log {
 public:
  CapturedSystemLog() : before_(trace::SystemLog::LeadTo(this)) {}
  ~CapturedSystemLog() override { trace::SystemLog::LeadTo(before_); }
  CapturedSystemLog(const CapturedSystemLog&) = delete;
  CapturedSystemLog& operator=(const CapturedSystemLog&) = delete;

  // The lines so far, which are forgotten.
  [[nodiscard]] std::vector<std::string> TakeLines() {
    const std::lock_guard lock(mutex_);
    return std::exchange(lines_, {});
  }

 private:
  void Write(const std::string& line) override {
    const std::lock_guard lock(mutex_);
    lines_.push_back(line);
  }

  std::mutex mutex_;
  std::vector<std::string> lines_;
  trace::SystemLog::Log* const before_;
};

}  // namespace TestSupport

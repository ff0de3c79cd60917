#pragma once

#include "DbgTrace.h"

#include <mutex>
#include <sstream>
#include <string>
#include <utility>

namespace TestSupport {

// Leads the trace log, all levels, into a text for as long as it lives.
class TraceCapture {
 public:
  TraceCapture() {
    const std::lock_guard lock(trace::wdbgMutex);
    before_ = trace::wdbg.rdbuf(&buffer_);
    verboseBefore_ = std::exchange(trace::VerboseOption, true);
  }
  ~TraceCapture() {
    const std::lock_guard lock(trace::wdbgMutex);
    trace::wdbg.rdbuf(before_);
    trace::VerboseOption = verboseBefore_;
  }
  TraceCapture(const TraceCapture&) = delete;
  TraceCapture& operator=(const TraceCapture&) = delete;

  // The records so far, each byte of the log one byte.
  [[nodiscard]] std::string Text() const {
    const std::lock_guard lock(trace::wdbgMutex);
    std::string text;
    for (const wchar_t byte : buffer_.str()) text += static_cast<char>(byte);
    return text;
  }

 private:
  std::wstringbuf buffer_;
  std::wstreambuf* before_ = nullptr;
  bool verboseBefore_ = false;
};

}  // namespace TestSupport

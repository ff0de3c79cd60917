#pragma once

#include <string>
#include <vector>

namespace TestSupport {

// What the test program and a module of its own write with the C library's syslog(), which the program
// defines in its place, while this object lives; at other times it is dropped. One at a time. Any thread may
// write.
class CapturedSyslog {
 public:
  CapturedSyslog();
  ~CapturedSyslog();
  CapturedSyslog(const CapturedSyslog&) = delete;
  CapturedSyslog& operator=(const CapturedSyslog&) = delete;

  // The lines so far, which are forgotten.
  [[nodiscard]] std::vector<std::string> TakeLines();

 private:
  std::vector<std::string> lines_;
};

}  // namespace TestSupport

#pragma once

#include <functional>

namespace TestSupport {

// The seconds for which the core waits, which pass at once. One thread.
class DrivenClock {
 public:
  // Called for every second that is waited for, with the number of seconds so far; false ends the process's
  // time as its termination does.
  void OnSecond(std::function<bool(int)> passed) { passed_ = std::move(passed); }
  [[nodiscard]] int Seconds() const { return seconds_; }

  [[nodiscard]] bool Pass() {
    ++seconds_;
    return !passed_ || passed_(seconds_);
  }

 private:
  std::function<bool(int)> passed_;
  int seconds_ = 0;
};

}  // namespace TestSupport

#pragma once

#include <chrono>
#include <optional>

namespace Wayfinding {

// When stores without an answer are asked again: after 1, 2, 4 ... up to 300 s, each 30 percent more or less,
// so that many machines do not ask at the same time. Only keeps the time. One thread.
class Repetition {
 public:
  using TimePoint = std::chrono::steady_clock::time_point;

  // Some have no answer. A repetition that is to come already keeps its time; one that is due comes at once.
  // `chance`: evenly spread over [0, 1). Returns the time until then.
  std::chrono::milliseconds Plan(TimePoint now, double chance);
  // True, once, when it is due.
  [[nodiscard]] bool Take(TimePoint now);
  // All are asked anyway; the delays go on.
  void Cancel() { due_.reset(); }
  // Nobody needs one, and the delays begin anew.
  void Forget() { *this = {}; }

  // Nothing when none is to come.
  [[nodiscard]] std::optional<TimePoint> Due() const { return due_; }
  // Repetitions so far, the one to come included.
  [[nodiscard]] unsigned int Attempts() const { return attempts_; }

 private:
  std::optional<TimePoint> due_;
  unsigned int attempts_ = 0;
};

}  // namespace Wayfinding

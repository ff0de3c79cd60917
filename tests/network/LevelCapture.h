#pragma once

#include <set>
#include <streambuf>

namespace TestSupport {

// Takes the place of the trace log, all levels, as long as it lives, and keeps the levels of its records. One
// thread.
class LevelCapture : private std::wstreambuf {
 public:
  LevelCapture();
  ~LevelCapture() override;
  LevelCapture(const LevelCapture&) = delete;
  LevelCapture& operator=(const LevelCapture&) = delete;

  [[nodiscard]] const std::set<long>& Levels() const { return levels_; }

 private:
  int_type overflow(int_type character) override;

  std::set<long> levels_;
  std::wstreambuf* before_ = nullptr;
  bool verboseBefore_ = false;
};

}  // namespace TestSupport

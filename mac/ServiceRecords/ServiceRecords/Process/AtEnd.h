#pragma once

#include <functional>
#include <utility>

namespace Agent {

// Reports the result of a piece of work however it ends, and when it does not begin.
class AtEnd {
 public:
  explicit AtEnd(std::function<void(bool)> report) : report_(std::move(report)) {}
  ~AtEnd() { report_(result); }
  AtEnd(const AtEnd&) = delete;
  AtEnd& operator=(const AtEnd&) = delete;

  bool result = false;

 private:
  const std::function<void(bool result)> report_;
};

}  // namespace Agent

#pragma once

#include <chrono>
#include <string>
#include <vector>

namespace Bench {

// Prints one figure of this program, as {"figures": {...}} once all have been added. One thread.
class Outputs {
 public:
  Outputs() = default;
  ~Outputs();
  Outputs(const Outputs&) = delete;
  Outputs& operator=(const Outputs&) = delete;

  void Add(const std::string& name, double value);

 private:
  std::string text_;
};

using Times = std::vector<std::chrono::nanoseconds>;

// The time that the given share of them do not exceed, in nanoseconds: 0.5 for the median. Not of none.
[[nodiscard]] double Quantile(Times times, double share);

}  // namespace Bench

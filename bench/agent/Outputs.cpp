#include "agent/Outputs.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iostream>

namespace Bench {

Outputs::~Outputs() {
  std::cout << "{\"figures\": {" << text_ << "}}\n";
}

void Outputs::Add(const std::string& name, double value) {
  if (!text_.empty()) text_ += ", ";
  text_ += "\"" + name + "\": " + std::to_string(value);
}

double Quantile(Times times, double share) {
  std::sort(times.begin(), times.end());
  const double rank = std::ceil(share * static_cast<double>(times.size()));
  const std::size_t place = std::min(times.size(), static_cast<std::size_t>(std::max(rank, 1.0))) - 1;
  return static_cast<double>(times[place].count());
}

}  // namespace Bench

#pragma once

#include <string>
#include <vector>

// How a run of srctl ended and what it said.
struct SrctlRun {
  int status = -1;
  std::string output;
  std::string errors;
};

struct SrctlSetting {
  std::string input = {};   // what srctl reads from standard input
  std::string folder = {};  // where it runs; the test's own folder when empty
};

// Runs the staged srctl with these arguments to its end. `environment`: NAME=value on top of the test's own;
// a bare NAME is taken out. Throws when srctl cannot be run or does not end.
[[nodiscard]] SrctlRun RunSrctl(const std::vector<std::string>& arguments,
                                const std::vector<std::string>& environment,
                                const SrctlSetting& setting = {});

#pragma once

#include <map>
#include <string>

namespace Bench {

// What was measured, by name: times in nanoseconds, sizes in bytes, everything else as its number.
using Figures = std::map<std::string, double>;

// Adds the figures of one program's output. {"figures": {name: value}} is taken as it stands; of the output
// of the benchmark library the median of each benchmark is, under its name and arguments ("SaveStores/100"),
// and its counters ("SaveStores/100:calls"). A benchmark that failed has no figure. Throws nlohmann's
// exceptions for what is no JSON, and std::runtime_error for JSON without figures.
void AddFigures(std::string output, Figures& figures);

}  // namespace Bench

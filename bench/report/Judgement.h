#pragma once

#include "report/Figures.h"

#include <nlohmann/json_fwd.hpp>

#include <optional>
#include <set>
#include <string>
#include <vector>

namespace Bench {

// One target of targets.json and what became of it. A target is met by a figure that is at most its limit:
// `times` the floor, and what the target allows beside. What was not measured is missed.
struct Row {
  std::string group;
  std::string what;
  std::string target;  // in words
  std::string unit;    // of the table: ns, us, ms, B, MiB, or empty for a number
  std::optional<double> floor;
  std::optional<double> measured;
  std::optional<double> limit;
  [[nodiscard]] bool IsMet() const { return measured && limit && *measured <= *limit; }
};

// The targets of these groups, of all without any, in the order of the file. Throws nlohmann's exceptions for
// targets that are not as targets.json explains them.
[[nodiscard]] std::vector<Row> Judge(const nlohmann::json& targets, const std::set<std::string>& groups,
                                     const Figures& figures);
[[nodiscard]] bool AllMet(const std::vector<Row>& rows);

// Lines of a table for people: what, floor, measured, ratio, target, met or missed.
[[nodiscard]] std::string Table(const std::vector<Row>& rows);
[[nodiscard]] nlohmann::json AsJson(const std::vector<Row>& rows);
// What a growth plot is drawn from, for gnuplot: its title and unit, whether it has a floor, and lines "size
// measured floor" with
// "?" for a floor without a figure. Empty when no size has a figure.
[[nodiscard]] std::string PlotScript(const nlohmann::json& plot, const Figures& figures);

}  // namespace Bench

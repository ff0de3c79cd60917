#include "report/Judgement.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <stdexcept>

namespace Bench {
namespace {

using nlohmann::json;

std::optional<double> Find(const Figures& figures, const std::string& name) {
  const auto found = figures.find(name);
  return found == figures.end() ? std::nullopt : std::optional(found->second);
}

// Nothing when a figure that the limit needs is missing.
std::optional<double> Limit(const json& target, std::optional<double> floor, const Figures& figures) {
  double limit = target.value("constant", 0.0);
  if (const double times = target.value("times", 0.0); times > 0) {
    if (!floor) return std::nullopt;
    limit += times * *floor;
  }
  const json plus = target.value("plus", json::array());
  for (const json& part : plus) {
    const std::optional<double> figure = Find(figures, part.at("figure"));
    if (!figure) return std::nullopt;
    limit += part.at("each").get<double>() * *figure;
  }
  return limit;
}

Row MakeRow(const json& target, const Figures& figures) {
  Row row{.group = target.at("group"),
          .what = target.at("what"),
          .target = target.at("target"),
          .unit = target.at("unit"),
          .floor = Find(figures, target.value("floor", "")),
          .measured = Find(figures, target.at("measured")),
          .limit = std::nullopt};
  row.limit = Limit(target, row.floor, figures);
  return row;
}

double Scale(const std::string& unit) {
  if (unit.empty() || unit == "ns" || unit == "B") return 1;
  if (unit == "us") return 1e3;
  if (unit == "ms") return 1e6;
  if (unit == "MiB") return 1 << 20;
  throw std::runtime_error("an unknown unit: " + unit);
}

std::string Amount(const std::optional<double>& value, const std::string& unit) {
  if (!value) return "-";
  const double shown = *value / Scale(unit);
  const int digits = shown >= 100 || shown == static_cast<int>(shown) ? 0 : shown >= 10 ? 1 : 2;
  return fmt::format("{:.{}f}{}{}", shown, digits, unit.empty() ? "" : " ", unit);
}

std::string Ratio(const Row& row) {
  if (!row.measured || !row.floor || *row.floor <= 0) return "-";
  return fmt::format("{:.2f}", *row.measured / *row.floor);
}

using Cells = std::array<std::string, 7>;

Cells CellsOf(const Row& row) {
  const std::string verdict = !row.measured ? "missed: not measured" : row.IsMet() ? "met" : "MISSED";
  return {row.what,
          Amount(row.floor, row.unit),
          Amount(row.measured, row.unit),
          Ratio(row),
          row.target,
          Amount(row.limit, row.unit),
          verdict};
}

json OrNull(const std::optional<double>& value) {
  return value ? json(*value) : json();
}

}  // namespace

std::vector<Row> Judge(const json& targets, const std::set<std::string>& groups, const Figures& figures) {
  std::vector<Row> rows;
  for (const json& target : targets.at("targets")) {
    if (groups.empty() || groups.contains(target.at("group"))) rows.push_back(MakeRow(target, figures));
  }
  return rows;
}

bool AllMet(const std::vector<Row>& rows) {
  return std::all_of(rows.begin(), rows.end(), [](const Row& row) { return row.IsMet(); });
}

std::string Table(const std::vector<Row>& rows) {
  std::vector<Cells> lines{{"what", "floor", "measured", "ratio", "target", "that is", "verdict"}};
  for (const Row& row : rows) lines.push_back(CellsOf(row));
  std::array<std::size_t, std::tuple_size_v<Cells>> widths{};
  for (const Cells& cells : lines) {
    for (std::size_t i = 0; i < cells.size(); ++i) widths[i] = std::max(widths[i], cells[i].size());
  }
  std::string table;
  for (const Cells& cells : lines) {
    for (std::size_t i = 0; i < cells.size(); ++i) table += fmt::format("| {:<{}} ", cells[i], widths[i]);
    table += "|\n";
    if (&cells != &lines.front()) continue;
    for (const std::size_t width : widths) table += "|" + std::string(width + 2, '-');
    table += "|\n";
  }
  return table;
}

json AsJson(const std::vector<Row>& rows) {
  json list = json::array();
  for (const Row& row : rows) {
    list.push_back({{"group", row.group},
                    {"what", row.what},
                    {"target", row.target},
                    {"floor", OrNull(row.floor)},
                    {"measured", OrNull(row.measured)},
                    {"limit", OrNull(row.limit)},
                    {"met", row.IsMet()}});
  }
  return list;
}

std::string PlotScript(const json& plot, const Figures& figures) {
  const std::string unit = plot.at("unit");
  const double scale = Scale(unit);
  const std::string ofFloor = plot.at("floor");
  std::string lines;
  for (const json& size : plot.at("sizes")) {
    const std::string argument = fmt::format("/{}", size.get<int>());
    const auto measured = Find(figures, plot.at("measured").get<std::string>() + argument);
    const auto floor = Find(figures, ofFloor + argument);
    if (!measured) continue;
    lines += fmt::format("{} {} {}\n", size.get<int>(), *measured / scale,
                         floor ? fmt::format("{}", *floor / scale) : "?");
  }
  if (lines.empty()) return {};
  return fmt::format("title = '{}'\nunit = '{}'\nfloor = {:d}\n$data << end\n{}end\n",
                     plot.at("title").get<std::string>(), unit, !ofFloor.empty(), lines);
}

}  // namespace Bench

#include "report/Figures.h"

#include <nlohmann/json.hpp>

#include <set>
#include <stdexcept>
#include <string_view>

namespace Bench {
namespace {

using nlohmann::json;

// What the library itself says of a benchmark; everything else that is a number is a counter.
const std::set<std::string_view> kOwnFields = {
    "cpu_time",         "family_index", "iterations", "real_time",
    "repetition_index", "repetitions",  "threads",    "per_family_instance_index"};

// The name without the settings that the library adds: "SaveStores/100/min_time:0.150/real_time".
std::string PlainName(const std::string& name) {
  std::string plain;
  for (std::size_t start = 0; start <= name.size();) {
    const std::size_t end = std::min(name.find('/', start), name.size());
    const std::string part = name.substr(start, end - start);
    if (part == "real_time" || part.find(':') != std::string::npos) break;
    plain += (plain.empty() ? "" : "/") + part;
    start = end + 1;
  }
  return plain;
}

// Whichever of its times the benchmark was asked to be measured by.
std::string TimeField(const std::string& name) {
  return name.ends_with("/real_time") ? "real_time" : "cpu_time";
}

double Nanoseconds(const std::string& unit) {
  if (unit == "ns") return 1;
  if (unit == "us") return 1e3;
  if (unit == "ms") return 1e6;
  if (unit == "s") return 1e9;
  throw std::runtime_error("a time in an unknown unit: " + unit);
}

// The library writes what JSON has no word for, where a counter is always 0.
void ReplaceNaN(std::string& text) {
  constexpr std::string_view kNaN = ": NaN";
  for (std::size_t at = 0; (at = text.find(kNaN, at)) != std::string::npos;)
    text.replace(at, kNaN.size(), ": null");
}

void AddBenchmark(const json& benchmark, Figures& figures) {
  if (benchmark.value("error_occurred", false) || benchmark.value("aggregate_name", "") != "median") return;
  const std::string name = PlainName(benchmark.at("run_name"));
  figures[name] = benchmark.at(TimeField(benchmark.at("run_name"))).get<double>() *
                  Nanoseconds(benchmark.at("time_unit"));
  for (const auto& [field, value] : benchmark.items()) {
    if (value.is_number() && !kOwnFields.contains(field)) figures[name + ":" + field] = value;
  }
}

}  // namespace

void AddFigures(std::string output, Figures& figures) {
  ReplaceNaN(output);
  const json parsed = json::parse(output);
  if (parsed.contains("figures")) {
    for (const auto& [name, value] : parsed.at("figures").items()) figures[name] = value;
  } else if (parsed.contains("benchmarks")) {
    for (const json& benchmark : parsed.at("benchmarks")) AddBenchmark(benchmark, figures);
  } else {
    throw std::runtime_error("no figures in the output");
  }
}

}  // namespace Bench

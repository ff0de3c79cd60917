#include "report/Figures.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

using Bench::Figures;

Figures FiguresOf(const std::string& output) {
  Figures figures;
  Bench::AddFigures(output, figures);
  return figures;
}

TEST(Figures, AreTakenAsTheyStandFromAProgramOfOurOwn) {
  EXPECT_EQ(FiguresOf(R"({"figures": {"Start/10": 12.5, "WakeUps": 0}})"),
            (Figures{{"Start/10", 12.5}, {"WakeUps", 0}}));
}

TEST(Figures, AreTheMediansOfTheBenchmarkLibraryWithItsCounters) {
  EXPECT_EQ(FiguresOf(R"({"context": {}, "benchmarks": [
    {"run_name": "Save/10/min_time:0.030/repeats:25/real_time", "aggregate_name": "mean", "real_time": 9,
     "cpu_time": 1, "time_unit": "us"},
    {"run_name": "Save/10/min_time:0.030/repeats:25/real_time", "aggregate_name": "median", "real_time": 2,
     "cpu_time": 1, "time_unit": "us", "iterations": 25, "calls": 361.0}]})"),
            (Figures{{"Save/10", 2000}, {"Save/10:calls", 361}}));
}

TEST(Figures, AreProcessorTimesWhereTheBenchmarkDoesNotAskForTheClockOnTheWall) {
  EXPECT_EQ(FiguresOf(R"({"benchmarks": [{"run_name": "Parse/1/min_time:0.040/repeats:15",
    "aggregate_name": "median", "real_time": 9, "cpu_time": 4, "time_unit": "ms"}]})"),
            (Figures{{"Parse/1", 4e6}}));
}

TEST(Figures, AreNotThereForABenchmarkThatFailed) {
  EXPECT_EQ(
      FiguresOf(R"({"benchmarks": [{"run_name": "Parse/1", "run_type": "iteration", "repetition_index": 0,
    "error_occurred": true, "error_message": "stores are missing", "real_time": 9, "cpu_time": 4,
    "time_unit": "ms"}]})"),
      Figures{});
}

TEST(Figures, AreTakenFromAnOutputWithNumbersThatAreNone) {
  EXPECT_EQ(FiguresOf(R"({"benchmarks": [
    {"run_name": "Trace", "aggregate_name": "median", "cpu_time": 4, "time_unit": "ns", "bytes": 0.0},
    {"run_name": "Trace", "aggregate_name": "cv", "cpu_time": 0.1, "time_unit": "ns", "bytes": NaN}]})"),
            (Figures{{"Trace", 4}, {"Trace:bytes", 0}}));
}

TEST(Figures, AreDemanded) {
  EXPECT_THROW(FiguresOf("{}"), std::runtime_error);
}

}  // namespace

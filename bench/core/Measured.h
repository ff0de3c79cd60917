#pragma once

#include <benchmark/benchmark.h>

namespace Bench {

// How everything is measured: several times, of which the median counts. Short repetitions, so that what else
// runs on the machine spoils some of them and not all.

// What only computes: by the processor time of its thread.
inline constexpr auto kComputing = [](auto* benchmark) {
  benchmark->MinTime(0.04)->Repetitions(15)->ReportAggregatesOnly(true);
};

// What waits for the disk or for another process: by the clock on the wall.
inline constexpr auto kWaiting = [](auto* benchmark) {
  benchmark->UseRealTime()->MinTime(0.03)->Repetitions(25)->ReportAggregatesOnly(true);
};

}  // namespace Bench

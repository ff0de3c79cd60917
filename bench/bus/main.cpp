// Measures what the agent answers over the bus, at rest, with a list of one size:
// bus_bench --stores=N [options of the benchmark library]
#include "bus/BusBench.h"
#include "common/FileContent.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <iostream>
#include <string_view>

int main(int argc, char** argv) {
  constexpr std::string_view kStores = "--stores=";
  if (argc < 2 || !std::string_view(argv[1]).starts_with(kStores)) {
    std::cerr << "usage: bus_bench --stores=N [options]\n";
    return 2;
  }
  const std::size_t stores = std::strtoul(argv[1] + kStores.size(), nullptr, 10);
  argv[1] = argv[0];
  int left = argc - 1;
  benchmark::Initialize(&left, argv + 1);
  if (benchmark::ReportUnrecognizedArguments(left, argv + 1)) return 2;
  bench::BusBench bench(stores);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}

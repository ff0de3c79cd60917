// The list in memory: a store looked up, lists merged.
#include "MacSRHTTPRequest.h"
#include "MacSSLValidation.h"
#include "Process/PlatformParts.h"
#include "SRLib/SRProvider.h"
#include "common/GeneratedStores.h"
#include "core/Allocations.h"
#include "core/Measured.h"
#include "libs/Text/TextHelpers.h"

#include <cstring>
#include <memory>
#include <vector>

namespace Bench {
namespace {

using ServiceRecords::SRProvider;
using ServiceRecords::StoreMap;

std::size_t Count(const benchmark::State& state) {
  return static_cast<std::size_t>(state.range(0));
}

ServiceRecords::ProviderParts Parts() {
  ServiceRecords::MacSRHTTPRequestFactory::Init();
  ServiceRecords::MacSSLValidationFactory::Init();
  return Agent::PlatformParts();
}

// A provider of its own, whose list is not saved anywhere.
std::unique_ptr<SRProvider> ProviderWith(std::size_t count, const StoreShape& shape = {}) {
  auto provider = std::make_unique<SRProvider>(Parts());
  StoreMap stores = Stores(count, shape);
  bool updated = false;
  provider->MergeStores(stores, true, updated);
  return provider;
}

// Kept for all look-ups in a list of that size.
const SRProvider& SharedProviderWith(std::size_t count) {
  static std::map<std::size_t, std::unique_ptr<SRProvider>> providers;
  std::unique_ptr<SRProvider>& provider = providers[count];
  if (provider == nullptr) provider = ProviderWith(count);
  return *provider;
}

std::string LastHost(std::size_t count) {
  return "https://" + StoreID(count - 1) + ".example";
}

// `request` points at the last store of the list, or at none.
void LookUp(benchmark::State& state, const std::string& request, bool isThere) {
  const SRProvider& provider = SharedProviderWith(Count(state));
  const std::wstring url = util::widen(request);
  ServiceRecords::SRStore store;
  if (provider.GetStoreFromURL(url, store) != isThere) state.SkipWithError("another store is found");
  const std::uint64_t before = AllocatedBytes();
  for (auto _ : state) {
    ServiceRecords::SRStore found;
    benchmark::DoNotOptimize(provider.GetStoreFromURL(url, found));
  }
  state.counters["bytes"] =
      benchmark::Counter(static_cast<double>(AllocatedBytes() - before), benchmark::Counter::kAvgIterations);
}

void LookUpExact(benchmark::State& state) {
  LookUp(state, StoreURL(Count(state) - 1), true);
}
BENCHMARK(LookUpExact)->Arg(100)->Arg(1000)->Arg(10000)->Apply(kComputing);

void LookUpTrimmed(benchmark::State& state) {
  LookUp(state, LastHost(Count(state)) + "/Example/Main/Some/Page", true);
}
BENCHMARK(LookUpTrimmed)->Arg(100)->Arg(1000)->Arg(10000)->Apply(kComputing);

void LookUpHost(benchmark::State& state) {
  LookUp(state, LastHost(Count(state)) + "/Elsewhere", true);
}
BENCHMARK(LookUpHost)->Arg(100)->Arg(1000)->Arg(10000)->Apply(kComputing);

void LookUpMiss(benchmark::State& state) {
  LookUp(state, "https://store-99999.example/Example/Main/Some/Page", false);
}
BENCHMARK(LookUpMiss)->Arg(100)->Arg(1000)->Arg(10000)->Apply(kComputing);

void LookUpFloor(benchmark::State& state) {
  std::string joined;
  for (std::size_t i = 0; i < Count(state); ++i) joined += StoreURL(i) + "\n";
  const std::string absent = "store-99999.example";
  for (auto _ : state) {
    benchmark::DoNotOptimize(::memmem(joined.data(), joined.size(), absent.data(), absent.size()));
  }
}
BENCHMARK(LookUpFloor)->Arg(100)->Arg(1000)->Arg(10000)->Apply(kComputing);

// What a merge needs is seldom at hand in an agent that merges now and then, so it is not here either: a
// hundred stores would fit into the processor's caches, and a thousand would not.
void EmptyCaches() {
  constexpr std::size_t kMoreThanTheCaches = std::size_t{128} << 20;
  static std::vector<char> other(kMoreThanTheCaches);
  for (std::size_t i = 0; i < other.size(); i += 64) ++other[i];
  benchmark::ClobberMemory();
}

// Into a list that holds all of them already.
void MergeStores(benchmark::State& state) {
  const StoreShape shape{.gateways = 20, .beacons = 20};
  const std::unique_ptr<SRProvider> provider = ProviderWith(Count(state), shape);
  const StoreMap stores = Stores(Count(state), shape);
  for (auto _ : state) {
    state.PauseTiming();
    StoreMap incoming = stores;
    EmptyCaches();
    state.ResumeTiming();
    bool updated = false;
    provider->MergeStores(incoming, true, updated);
    if (!updated) state.SkipWithError("nothing was merged");
    state.PauseTiming();
    incoming.clear();
    state.ResumeTiming();
  }
}
BENCHMARK(MergeStores)->Arg(10)->Arg(100)->Arg(1000)->Apply(kComputing);

}  // namespace
}  // namespace Bench

// The list in its file: saved, restored, one value read and written.
#include "Files/PreferenceFile.h"
#include "SRLib/SRRegistryConfig.h"
#include "common/FileContent.h"
#include "common/GeneratedStores.h"
#include "core/CountingConfiguration.h"
#include "core/Measured.h"
#include "libs/PropertyList/PropertyList.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <chrono>
#include <mutex>
#include <stdexcept>
#include <thread>

namespace Bench {
namespace {

using ServiceRecords::SRRegistryConfig;
using ServiceRecords::StoreMap;

// From this age on a file's times tell whether it has changed.
constexpr std::chrono::milliseconds kAgeOfUnchangedFile{1200};
constexpr std::size_t kStoresOfValue = 1000;

// Two lists of the same size that differ in one store, so that each write is one.
struct TwoLists {
  explicit TwoLists(std::size_t count) : lists{Stores(count), Stores(count)} {
    lists[1].begin()->second.SetStoreName(L"Other 00000");
  }
  [[nodiscard]] StoreMap& Next() { return lists[++turn % 2]; }

  StoreMap lists[2];
  std::size_t turn = 0;
};

// The same as files, taken in turn over all repetitions: nobody is given a file twice running.
struct TwoFiles {
  explicit TwoFiles(std::size_t count) {
    const TwoLists stores(count);
    for (int i = 0; i < 2; ++i) contents[i] = ListFile(stores.lists[i]);
  }
  [[nodiscard]] const std::string& Next() { return contents[++turn % 2]; }

  std::string contents[2];
  inline static std::size_t turn = 0;
};

std::size_t Count(const benchmark::State& state) {
  return static_cast<std::size_t>(state.range(0));
}

const CountingConfiguration& Configuration() {
  static const CountingConfiguration configuration;
  return configuration;
}

// The floors write what the agent does, or they would measure something else.
void DemandSavedBytes(const std::string& expected) {
  if (ReadFile(Agent::preferenceFile(true)) != expected)
    throw std::runtime_error("the file holds other bytes");
}

void SaveStores(benchmark::State& state) {
  TwoLists stores(Count(state));
  const SRRegistryConfig config(Configuration());
  config.SaveStores(stores.lists[0]);
  DemandSavedBytes(ListFile(stores.lists[0]));
  const std::uint64_t before = Configuration().Calls();
  for (auto _ : state) config.SaveStores(stores.Next());
  state.counters["calls"] = benchmark::Counter(static_cast<double>(Configuration().Calls() - before),
                                               benchmark::Counter::kAvgIterations);
}
BENCHMARK(SaveStores)->Arg(10)->Arg(100)->Arg(1000)->Apply(kWaiting);

void SaveStoresFloor(benchmark::State& state) {
  TwoFiles files(Count(state));
  for (auto _ : state) ReplaceDurably(Agent::preferenceFile(true), files.Next());
}
BENCHMARK(SaveStoresFloor)->Arg(10)->Arg(100)->Arg(1000)->Apply(kWaiting);

// Another program has replaced the file each time, as it has for a process that starts.
void RestoreStores(benchmark::State& state) {
  TwoFiles files(Count(state));
  for (auto _ : state) {
    state.PauseTiming();
    PutFile(Agent::preferenceFile(true), files.Next());
    state.ResumeTiming();
    if (SRRegistryConfig(Configuration()).RestoreStores().size() != Count(state))
      state.SkipWithError("stores are missing");
  }
}
BENCHMARK(RestoreStores)->Arg(10)->Arg(100)->Arg(1000)->Apply(kWaiting);

void RestoreStoresFloor(benchmark::State& state) {
  TwoFiles files(Count(state));
  for (auto _ : state) {
    state.PauseTiming();
    PutFile(Agent::preferenceFile(true), files.Next());
    state.ResumeTiming();
    benchmark::DoNotOptimize(PropertyList::Read(ReadFile(Agent::preferenceFile(true))));
  }
}
BENCHMARK(RestoreStoresFloor)->Arg(10)->Arg(100)->Arg(1000)->Apply(kWaiting);

std::wstring KeyOfValue() {
  return L"SR\\Store\\store-00500\\SRType";
}

// The file of a list that nobody changes, once for both: so old that its times are to be trusted.
void PutOldFile() {
  PutFile(Agent::preferenceFile(true), ListFile(Stores(kStoresOfValue)));
  std::this_thread::sleep_for(kAgeOfUnchangedFile);
}

void DemandOldFile() {
  static std::once_flag done;
  std::call_once(done, PutOldFile);
}

void GetUInt(benchmark::State& state) {
  DemandOldFile();
  const std::wstring key = KeyOfValue();
  std::uint32_t value = 0;
  if (!Configuration().GetUInt(key, 7, value)) state.SkipWithError("the value is missing");
  for (auto _ : state) benchmark::DoNotOptimize(Configuration().GetUInt(key, 7, value));
}
BENCHMARK(GetUInt)->Apply(kComputing);

void GetUIntFloor(benchmark::State& state) {
  DemandOldFile();
  const std::string file = Agent::preferenceFile(true);
  for (auto _ : state) {
    const int descriptor = ::open(file.c_str(), O_RDONLY | O_CLOEXEC);
    struct stat status {};
    benchmark::DoNotOptimize(::fstat(descriptor, &status));
    ::close(descriptor);
  }
}
BENCHMARK(GetUIntFloor)->Apply(kComputing);

void SetUInt(benchmark::State& state) {
  PutFile(Agent::preferenceFile(true), ListFile(Stores(kStoresOfValue)));
  const std::wstring key = KeyOfValue();
  std::uint32_t value = 0;
  for (auto _ : state) Configuration().SetUInt(key, value++ % 2);
}
BENCHMARK(SetUInt)->Apply(kWaiting);

void SetUIntFloor(benchmark::State& state) {
  TwoFiles files(kStoresOfValue);
  for (auto _ : state) ReplaceDurably(Agent::preferenceFile(true), files.Next());
}
BENCHMARK(SetUIntFloor)->Apply(kWaiting);

}  // namespace
}  // namespace Bench

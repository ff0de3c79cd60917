#pragma once

#include "common/Caller.h"
#include "common/ServedAgent.h"
#include "support/ChildProcess.h"

#include <cstddef>
#include <functional>
#include <string>

namespace benchmark {
class State;
}

namespace bench {

// An agent with a list of one size and the bare service with the same list on its bus, and the benchmarks
// that call them, which are registered for as long as this object lives.
class BusBench {
 public:
  explicit BusBench(std::size_t stores);

 private:
  void Register(const std::string& name, std::function<void(benchmark::State&)> run) const;
  // Both services answer the same bytes, or nothing could be compared. Throws std::runtime_error.
  void DemandSameAnswers();

  void AllStores(benchmark::State& state, Caller& caller);
  // One store after the other.
  void AskOneByOne(benchmark::State& state, Caller& caller, const char* method,
                   std::string (*argument)(std::size_t));
  static void Ping(benchmark::State& state, Caller& caller);
  // One and the same store, which the agent is given again each time.
  void DeleteStore(benchmark::State& state);
  void DeleteStoreFloor(benchmark::State& state);

  const std::size_t stores_;
  ServedAgent agent_;
  testsupport::ChildProcess bareService_;
  Caller serviceRecords_;
  Caller beacons_;
  Caller bare_;
};

}  // namespace bench

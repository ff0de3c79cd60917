#include "agent/Outputs.h"
#include "agent/Scenarios.h"
#include "common/ServedAgent.h"
#include "libs/Bus/ServiceNames.h"
#include "support/BusConnection.h"

#include <csignal>
#include <set>
#include <stdexcept>

namespace Bench {
namespace {

using TestSupport::CheckBus;
using TestSupport::ChildProcess;
using TestSupport::TestAgent;

constexpr int kStarts = 15;
constexpr char kBareName[] = "com.morvane.bench.BareName";
constexpr std::chrono::seconds kTimeToStart{30};

// Sees on a bus who comes to own these names.
class NameWatch {
 public:
  NameWatch(const std::string& address, const std::set<std::string>& names)
      : bus_(TestSupport::ConnectToBus(address)), missing_(names) {
    for (const std::string& name : names) {
      const std::string rule =
          "type='signal',sender='org.freedesktop.DBus',member='NameOwnerChanged',arg0='" + name + "'";
      CheckBus(sd_bus_add_match(bus_.get(), nullptr, rule.c_str(), TakeOwner, this), rule);
    }
  }

  void WaitForAll() {
    const auto deadline = std::chrono::steady_clock::now() + kTimeToStart;
    while (!missing_.empty()) {
      if (std::chrono::steady_clock::now() > deadline)
        throw std::runtime_error("the names stay without owner");
      const int result = sd_bus_process(bus_.get(), nullptr);
      CheckBus(result, "processing");
      if (result == 0)
        CheckBus(sd_bus_wait(bus_.get(), std::chrono::microseconds(kTimeToStart).count()), "waiting");
    }
  }

 private:
  static int TakeOwner(sd_bus_message* signal, void* self, sd_bus_error* /*error*/) {
    const char* name = nullptr;
    const char* before = nullptr;
    const char* after = nullptr;
    if (sd_bus_message_read(signal, "sss", &name, &before, &after) < 0 || *after == '\0') return 0;
    static_cast<NameWatch*>(self)->missing_.erase(name);
    return 0;
  }

  const Bus::BusPtr bus_;
  std::set<std::string> missing_;
};

std::chrono::nanoseconds TimeOfStart(TestAgent& machine, const std::vector<std::string>& command,
                                     const std::set<std::string>& names) {
  NameWatch watch(machine.BusAddress(), names);
  const auto begin = std::chrono::steady_clock::now();
  ChildProcess program(command, machine.Environment());
  watch.WaitForAll();
  const auto time = std::chrono::steady_clock::now() - begin;
  program.Signal(SIGTERM);
  program.Wait();
  return time;
}

std::chrono::nanoseconds TimeOfAgent(ServedAgent& agent) {
  return TimeOfStart(agent.Agent(), {(agent.Agent().BundleFolder() / "ServiceRecords").string()},
                     {Bus::ServiceNames::kServiceRecords, Bus::ServiceNames::kBeacons});
}

// Of the machine's list, by a process that has just started, as the agent has.
std::chrono::nanoseconds TimeOfRestore(TestAgent& machine) {
  ChildProcess program({SR_BENCH_DIR "/restore_once"}, machine.Environment());
  const std::string output = program.WaitForOutput(" ns");
  if (program.Wait() != 0) throw std::runtime_error("nothing was restored");
  return std::chrono::nanoseconds(std::stoll(output));
}

struct StartTimes {
  explicit StartTimes(std::size_t count) : stores(count), agent(count) {}
  void Add() {
    starts.push_back(TimeOfAgent(agent));
    restores.push_back(TimeOfRestore(agent.Agent()));
  }
  void Tell(Outputs& outputs) const {
    outputs.Add("Start/" + std::to_string(stores), Quantile(starts, 0.5));
    outputs.Add("StartRestore/" + std::to_string(stores), Quantile(restores, 0.5));
  }

  const std::size_t stores;
  ServedAgent agent;
  Times starts;
  Times restores;
};

}  // namespace

void MeasureStart(Outputs& outputs) {
  StartTimes small(10);
  StartTimes large(1000);
  Times bare;
  for (int i = 0; i < kStarts; ++i) {
    bare.push_back(TimeOfStart(small.agent.Agent(), {SR_BENCH_DIR "/bare_name", kBareName}, {kBareName}));
    small.Add();
    large.Add();
  }
  outputs.Add("StartFloor", Quantile(bare, 0.5));
  small.Tell(outputs);
  large.Tell(outputs);
}

}  // namespace Bench

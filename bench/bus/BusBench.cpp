#include "bus/BusBench.h"

#include "common/FileContent.h"
#include "common/Measured.h"

#include <stdexcept>

namespace bench {
namespace {

constexpr char kBareName[] = "com.morvane.bench.BareService";
constexpr std::size_t kLargestListAnswered = 1000;

Caller::Target BareService() {
  Caller::Target target = Caller::ServiceRecords();
  target.name = kBareName;
  return target;
}

testsupport::ChildProcess StartBareService(testsupport::TestAgent& agent, std::size_t stores) {
  testsupport::ChildProcess service({SR_BENCH_DIR "/bare_service", kBareName, std::to_string(stores)},
                                    agent.Environment());
  if (!agent.Bus().WaitUntilOwned(kBareName, true)) throw std::runtime_error("no bare service");
  return service;
}

}  // namespace

BusBench::BusBench(std::size_t stores)
    : stores_(stores),
      agent_((stores)),
      bareService_(StartBareService(agent_.Agent(), stores)),
      serviceRecords_(agent_.Agent().BusAddress(), Caller::ServiceRecords()),
      beacons_(agent_.Agent().BusAddress(), Caller::Beacons()),
      bare_(agent_.Agent().BusAddress(), BareService()) {
  agent_.Start();
  using benchmark::State;
  if (stores <= kLargestListAnswered) {
    DemandSameAnswers();
    Register("AllStores", [this](State& state) { AllStores(state, serviceRecords_); });
    Register("AllStoresFloor", [this](State& state) { AllStores(state, bare_); });
  }
  Register("StoreForID",
           [this](State& state) { AskOneByOne(state, serviceRecords_, "storeForID", StoreID); });
  Register("StoreForIDFloor", [this](State& state) { Ping(state, serviceRecords_); });
  Register("CurrentGateway",
           [this](State& state) { AskOneByOne(state, beacons_, "getCurrentGatewayForStore", StoreURL); });
  Register("CurrentGatewayFloor", [this](State& state) { Ping(state, beacons_); });
  Register("DeleteStore", [this](State& state) { DeleteStore(state); });
  Register("DeleteStoreFloor", [this](State& state) { DeleteStoreFloor(state); });
}

void BusBench::Register(const std::string& name, std::function<void(benchmark::State&)> run) const {
  auto* const registered =
      benchmark::RegisterBenchmark((name + "/" + std::to_string(stores_)).c_str(), std::move(run));
  registered->Apply(kWaiting);
}

void BusBench::DemandSameAnswers() {
  using testsupport::BusClient;
  const Caller::Target target = BareService();
  const auto answer = agent_.Agent().Bus().ServiceRecords("allStores");
  const auto bare = agent_.Agent().Bus().Call(target.name, target.path, target.interface, "allStores");
  if (answer != bare || answer.size() != stores_) throw std::runtime_error("the services differ");
}

void BusBench::AllStores(benchmark::State& state, Caller& caller) {
  for (auto _ : state) caller.Call("allStores");
}

void BusBench::AskOneByOne(benchmark::State& state, Caller& caller, const char* method,
                           std::string (*argument)(std::size_t)) {
  std::size_t number = 0;
  for (auto _ : state) caller.Call(method, argument(number++ % stores_));
}

void BusBench::Ping(benchmark::State& state, Caller& caller) {
  for (auto _ : state) caller.Ping();
}

void BusBench::DeleteStore(benchmark::State& state) {
  const std::string id = StoreID(stores_ / 2);
  const std::string document = testsupport::DiscoveryDocument({StoreAsText(stores_ / 2, ServedShape())});
  for (auto _ : state) {
    state.PauseTiming();
    serviceRecords_.Call("handleDiscoveryDocument", document);
    state.ResumeTiming();
    const BusMessagePtr reply = serviceRecords_.Call("deleteStore", id);
    int deleted = 0;
    sd_bus_message_read(reply.get(), "b", &deleted);
    if (deleted == 0) state.SkipWithError("nothing was deleted");
  }
  serviceRecords_.Call("handleDiscoveryDocument", document);
}

// Beside the agent's file, on the same disk.
void BusBench::DeleteStoreFloor(benchmark::State& state) {
  const std::string content = ReadFile(agent_.Agent().StoresFile());
  const std::filesystem::path file = agent_.Agent().Home() / "floor.plist";
  for (auto _ : state) ReplaceDurably(file, content);
}

}  // namespace bench

#include "agent/Outputs.h"
#include "agent/Scenarios.h"
#include "common/Caller.h"
#include "common/FileContent.h"
#include "common/ServedAgent.h"

#include <functional>
#include <stdexcept>

namespace Bench {
namespace {

using TestSupport::ChildProcess;
using TestSupport::TestAgent;

constexpr char kBareName[] = "com.morvane.bench.BareService";
constexpr std::size_t kLargestListAnswered = 1000;
constexpr std::size_t kCalls = 4000;
constexpr std::size_t kDeletions = 60;
constexpr std::chrono::seconds kTimeOfSampling{4};

std::chrono::nanoseconds TimeOf(const std::function<void()>& work) {
  const auto begin = std::chrono::steady_clock::now();
  work();
  return std::chrono::steady_clock::now() - begin;
}

// Floor and subject take turns call by call, so that both see the same machine, however busy it is.
struct Pair {
  std::string name;
  std::function<void()> floor;
  std::function<void()> subject;
  std::function<void()> before = [] {};  // each call of the subject
};

void Measure(const Pair& pair, std::size_t stores, std::size_t calls, Outputs& outputs) {
  Times floor;
  Times subject;
  const auto deadline = std::chrono::steady_clock::now() + kTimeOfSampling;
  while (subject.size() < calls && std::chrono::steady_clock::now() < deadline) {
    pair.before();
    subject.push_back(TimeOf(pair.subject));
    floor.push_back(TimeOf(pair.floor));
  }
  const std::string size = "/" + std::to_string(stores);
  outputs.Add(pair.name + size, Quantile(subject, 0.5));
  outputs.Add(pair.name + "Floor" + size, Quantile(floor, 0.5));
}

// A service beside the agent that answers allStores with the same stores.
class BareService {
 public:
  BareService(TestAgent& agent, std::size_t stores)
      : process_({SR_BENCH_DIR "/bare_service", kBareName, std::to_string(stores)}, agent.Environment()) {
    if (!agent.Bus().WaitUntilOwned(kBareName, true)) throw std::runtime_error("no bare service");
  }

  [[nodiscard]] static Caller::Target Target() {
    Caller::Target target = Caller::ServiceRecords();
    target.name = kBareName;
    return target;
  }

 private:
  const ChildProcess process_;
};

// Otherwise nothing could be compared.
void DemandSameAnswers(TestAgent& agent, std::size_t stores) {
  const Caller::Target target = BareService::Target();
  const auto answer = agent.Bus().ServiceRecords("allStores");
  const auto bare = agent.Bus().Call(target.name, target.path, target.interface, "allStores");
  if (answer != bare || answer.size() != stores) throw std::runtime_error("the services differ");
}

void MeasureAllStores(TestAgent& agent, std::size_t stores, Outputs& outputs) {
  const BareService service(agent, stores);
  DemandSameAnswers(agent, stores);
  Caller caller(agent.BusAddress(), Caller::ServiceRecords());
  Caller bare(agent.BusAddress(), BareService::Target());
  Measure({.name = "AllStores",
           .floor = [&] { bare.Call("allStores"); },
           .subject = [&] { caller.Call("allStores"); }},
          stores, kCalls, outputs);
}

// One store after the other, against Ping to the same service.
void MeasureQuestions(const std::string& name, Caller& caller, const char* method,
                      std::string (*argument)(std::size_t), std::size_t stores, Outputs& outputs) {
  std::size_t number = 0;
  Measure({.name = name,
           .floor = [&] { caller.Ping(); },
           .subject = [&] { caller.Call(method, argument(number++ % stores)); }},
          stores, kCalls, outputs);
}

void MeasureCallsWith(std::size_t stores, Outputs& outputs) {
  ServedAgent served(stores);
  served.Start();
  const std::string address = served.Agent().BusAddress();
  Caller serviceRecords(address, Caller::ServiceRecords());
  Caller beacons(address, Caller::Beacons());
  if (stores <= kLargestListAnswered) MeasureAllStores(served.Agent(), stores, outputs);
  MeasureQuestions("StoreForID", serviceRecords, "storeForID", StoreID, stores, outputs);
  MeasureQuestions("CurrentGateway", beacons, "getCurrentGatewayForStore", StoreURL, stores, outputs);
}

void Delete(Caller& caller, const std::string& id) {
  const Bus::BusMessagePtr reply = caller.Call("deleteStore", id);
  int deleted = 0;
  sd_bus_message_read(reply.get(), "b", &deleted);
  if (deleted == 0) throw std::runtime_error("nothing was deleted");
}

// The same store again and again; the floor is written beside the agent's file, on the same disk.
void MeasureDeletionOf(std::size_t stores, Outputs& outputs) {
  ServedAgent served(stores);
  served.Start();
  Caller caller(served.Agent().BusAddress(), Caller::ServiceRecords());
  const std::string id = StoreID(stores / 2);
  const std::string document = TestSupport::DiscoveryDocument({StoreAsText(stores / 2, ServedShape())});
  const std::string content = ReadFile(served.Agent().StoresFile());
  const std::filesystem::path file = served.Agent().Home() / "floor.plist";
  Measure({.name = "DeleteStore",
           .floor = [&] { ReplaceDurably(file, content); },
           .subject = [&] { Delete(caller, id); },
           .before = [&] { caller.Call("handleDiscoveryDocument", document); }},
          stores, kDeletions, outputs);
}

}  // namespace

void MeasureCalls(Outputs& outputs) {
  for (const std::size_t stores : {10U, 100U, 1000U, 10000U}) MeasureCallsWith(stores, outputs);
}

void MeasureDeletion(Outputs& outputs) {
  for (const std::size_t stores : {10U, 100U, 1000U}) MeasureDeletionOf(stores, outputs);
}

}  // namespace Bench

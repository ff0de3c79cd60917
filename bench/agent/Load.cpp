#include "agent/Outputs.h"
#include "agent/Scenarios.h"
#include "common/Caller.h"
#include "common/ServedAgent.h"
#include "support/TestAuthority.h"
#include "support/WebServer.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <stdexcept>

namespace Bench {
namespace {

using TestSupport::StoreText;
using TestSupport::TestAgent;
using TestSupport::TestAuthority;
using TestSupport::WebServer;

constexpr std::size_t kStores = 10;
constexpr std::size_t kFiles = 50;
constexpr std::size_t kCalls = 2000;
constexpr std::chrono::seconds kTimeOfCall{1};
constexpr std::chrono::seconds kTimeOfSampling{40};

// Calls again and again until `isOver`, or the time is.
Times SampleUntil(Caller& caller, const std::function<bool(std::size_t samples)>& isOver) {
  const auto deadline = std::chrono::steady_clock::now() + kTimeOfSampling;
  Times times;
  do {
    times.push_back(caller.TimeOf("allStores", kTimeOfCall));
  } while (!isOver(times.size()) && std::chrono::steady_clock::now() < deadline);
  return times;
}

// The user's machine, and a store server that it trusts.
class Desk {
 public:
  Desk()
      : server_(TestAuthority::Shared().TlsServerBlock("good")),
        agent_(kStores, {"SSL_CERT_FILE=" + TestAuthority::Shared().Root().string()}) {
    agent_.Start();
  }

  [[nodiscard]] TestAgent& Agent() { return agent_.Agent(); }

  // A file with a store at that server, whose discovery document says the same.
  std::string FileWithStore(const std::string& id) {
    const std::string server = server_.Address("https");
    StoreText store = StoreAsText(0, ServedShape());
    store.id = id;
    store.url = server + "/" + id + "/discovery";
    for (auto& gateway : store.gateways) gateway.location = server + "/" + gateway.name.substr(8);
    const std::filesystem::path document = server_.Document(id + "/discovery");
    std::filesystem::create_directories(document.parent_path());
    std::ofstream(document) << TestSupport::DiscoveryDocument({store});
    return Agent().Write(id + ".cr", TestSupport::ServiceRecordDocument({store})).string();
  }

 private:
  const WebServer server_;
  ServedAgent agent_;
};

bool IsAskingToReplace(TestAgent& agent) {
  const auto dialogs = agent.Dialogs();
  return !dialogs.empty() && dialogs.back().first == "replaceStore";
}

void MeasureAtRest(Caller& caller, Outputs& outputs) {
  const Times times = SampleUntil(caller, [](std::size_t samples) { return samples == kCalls; });
  outputs.Add("AllStores99/rest", Quantile(times, 0.99));
  outputs.Add("AllStores50/rest", Quantile(times, 0.5));
}

void MeasureWhileFilesAreOpened(Desk& desk, Caller& caller, Outputs& outputs) {
  std::vector<std::uint64_t> calls;
  for (std::size_t i = 0; i < kFiles; ++i) {
    const std::string file = desk.FileWithStore("file-" + std::to_string(i));
    calls.push_back(desk.Agent().Bus().StartServiceRecords("handleServiceRecordFTA", {file}));
  }
  const Times times = SampleUntil(caller, [&](std::size_t /*samples*/) {
    return std::all_of(calls.begin(), calls.end(),
                       [&](std::uint64_t call) { return desk.Agent().Bus().HasReply(call); });
  });
  outputs.Add("AllStores99/files", Quantile(times, 0.99));
  outputs.Add("AllStoresMost/files", Quantile(times, 1));
  outputs.Add("AllStoresCalls/files", static_cast<double>(times.size()));
}

void MeasureWhileQuestionIsOpen(Desk& desk, Caller& caller, Outputs& outputs) {
  const std::string file = desk.FileWithStore("asked");
  desk.Agent().Bus().ServiceRecords("handleServiceRecordFTA", {file});
  desk.Agent().HoldDialogs();
  const auto call = desk.Agent().Bus().StartServiceRecords("handleServiceRecordFTA", {file});
  desk.Agent().Release("accepted");
  if (!desk.Agent().Bus().WaitUntil([&] { return IsAskingToReplace(desk.Agent()); })) {
    throw std::runtime_error("nobody asks whether to replace the store");
  }
  const Times times = SampleUntil(caller, [](std::size_t samples) { return samples == kCalls; });
  desk.Agent().Release("declined");
  desk.Agent().Bus().WaitForReply(call);
  outputs.Add("AllStores99/question", Quantile(times, 0.99));
  outputs.Add("AllStoresMost/question", Quantile(times, 1));
}

}  // namespace

void MeasureLoad(Outputs& outputs) {
  Desk desk;
  Caller caller(desk.Agent().BusAddress(), Caller::ServiceRecords());
  MeasureAtRest(caller, outputs);
  MeasureWhileQuestionIsOpen(desk, caller, outputs);
  Desk other;
  Caller otherCaller(other.Agent().BusAddress(), Caller::ServiceRecords());
  MeasureWhileFilesAreOpened(other, otherCaller, outputs);
}

}  // namespace Bench

#include "agent/Desk.h"
#include "agent/Outputs.h"
#include "agent/Scenarios.h"
#include "common/Caller.h"

#include <algorithm>
#include <functional>
#include <stdexcept>

namespace Bench {
namespace {

using TestSupport::TestAgent;

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

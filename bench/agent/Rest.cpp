#include "agent/Outputs.h"
#include "agent/ProcessFigures.h"
#include "agent/Scenarios.h"
#include "common/ServedAgent.h"

#include <stdexcept>
#include <thread>

namespace Bench {
namespace {

using TestSupport::ChildProcess;
using TestSupport::TestAgent;

constexpr std::size_t kStores = 10;
constexpr char kBareName[] = "com.morvane.bench.BareName";
// What the bus and the location library still have to say to an agent that was just asked.
constexpr std::chrono::seconds kTimeToSettle{3};
constexpr std::chrono::seconds kMinute{60};

}  // namespace

void MeasureRest(Outputs& outputs) {
  ServedAgent agent(kStores);
  agent.Start();
  const ChildProcess bare({SR_BENCH_DIR "/bare_name", kBareName}, agent.Agent().Environment());
  if (!agent.Agent().Bus().WaitUntilOwned(kBareName, true)) throw std::runtime_error("no bare program");
  std::this_thread::sleep_for(kTimeToSettle);
  const std::uint64_t before = Switches(agent.Agent().Pid());
  std::this_thread::sleep_for(kMinute);
  outputs.Add("WakeUps", static_cast<double>(Switches(agent.Agent().Pid()) - before));
  outputs.Add("PrivateDirty", Memory(agent.Agent().Pid(), "Private_Dirty"));
  outputs.Add("PrivateDirtyFloor", Memory(bare.Pid(), "Private_Dirty"));
}

}  // namespace Bench

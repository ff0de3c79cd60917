#include "agent/Outputs.h"
#include "agent/ProcessFigures.h"
#include "agent/Scenarios.h"
#include "common/ServedAgent.h"

#include <memory>
#include <vector>

namespace Bench {
namespace {

constexpr std::size_t kStores = 10;
constexpr std::size_t kAgents = 100;

}  // namespace

void MeasureManyAgents(Outputs& outputs) {
  std::vector<std::unique_ptr<ServedAgent>> agents;
  const auto addAgent = [&agents] {
    agents.push_back(std::make_unique<ServedAgent>(kStores));
    agents.back()->Start();
  };
  const auto memory = [&agents] {
    double sum = 0;
    for (const auto& agent : agents) sum += Memory(agent->Agent().Pid(), "Pss");
    return sum;
  };
  addAgent();
  const double ofOne = memory();
  while (agents.size() < kAgents) addAgent();
  outputs.Add("OneAgent", ofOne);
  outputs.Add("EachFurtherAgent", (memory() - ofOne) / (kAgents - 1));
}

}  // namespace Bench

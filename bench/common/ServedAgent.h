#pragma once

#include "common/GeneratedStores.h"
#include "support/TestAgent.h"

#include <cstddef>
#include <string>

namespace Bench {

// The address of a server of this process at which all beacons answer, so that every store is decided.
[[nodiscard]] const std::string& BeaconServer();
// The shape of stores whose beacons are there.
[[nodiscard]] StoreShape ServedShape();

// An agent with a list of that many stores, on a machine of its own. One thread.
class ServedAgent {
 public:
  // The agent is not started yet.
  explicit ServedAgent(std::size_t stores, const std::vector<std::string>& environment = {});

  // Starts the agent, and waits until the location of every store is decided.
  void Start();

  [[nodiscard]] TestSupport::TestAgent& Agent() { return agent_; }

 private:
  const std::size_t stores_;
  TestSupport::TestAgent agent_;
};

}  // namespace Bench

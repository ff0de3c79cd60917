#pragma once

#include "srctl/SrctlRun.h"
#include "support/AgentTest.h"
#include "support/ChildProcess.h"

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

// A user at a terminal of the machine on which the agent runs.
class SrctlTest : public TestSupport::AgentTest {
 protected:
  [[nodiscard]] SrctlRun Srctl(const std::vector<std::string>& arguments,
                               const SrctlSetting& setting = {}) const {
    return RunSrctl(arguments, agent_.Environment(), setting);
  }

  // The same, without waiting for its end; standard error goes to the output.
  [[nodiscard]] TestSupport::ChildProcess StartSrctl(const std::vector<std::string>& arguments) const {
    std::vector<std::string> command{SR_STAGE_DIR "/bin/srctl"};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return TestSupport::ChildProcess(command, agent_.Environment(), {.captureErrors = true});
  }

  void GiveStores(const std::vector<TestSupport::StoreText>& stores) {
    agent_.Bus().ServiceRecords("handleDiscoveryDocument", {TestSupport::DiscoveryDocument(stores)});
  }
};

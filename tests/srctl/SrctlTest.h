#pragma once

#include "agent/AgentTest.h"
#include "srctl/SrctlRun.h"

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

// A user at a terminal of the machine on which the agent runs.
class SrctlTest : public AgentTest {
 protected:
  [[nodiscard]] SrctlRun Srctl(const std::vector<std::string>& arguments,
                               const SrctlSetting& setting = {}) const {
    return RunSrctl(arguments, agent_.Environment(), setting);
  }

  void GiveStores(const std::vector<testsupport::StoreText>& stores) {
    agent_.Bus().ServiceRecords("handleDiscoveryDocument", {testsupport::DiscoveryDocument(stores)});
  }
};

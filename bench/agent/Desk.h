#pragma once

#include "common/ServedAgent.h"
#include "support/TestAgent.h"
#include "support/WebServer.h"

#include <string>
#include <vector>

namespace Bench {

// A user's machine with an agent that holds ten stores, and a store server that it trusts. One thread.
class Desk {
 public:
  // `environment` goes to the bus and the agent, as NAME=value.
  explicit Desk(const std::vector<std::string>& environment = {});

  [[nodiscard]] TestSupport::TestAgent& Agent() { return agent_.Agent(); }

  // A file with a store at that server, whose discovery document says the same.
  [[nodiscard]] std::string FileWithStore(const std::string& id);

 private:
  const TestSupport::WebServer server_;
  ServedAgent agent_;
};

}  // namespace Bench

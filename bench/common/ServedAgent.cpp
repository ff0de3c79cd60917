#include "common/ServedAgent.h"

#include "common/FileContent.h"
#include "support/WebServer.h"

#include <chrono>
#include <stdexcept>

namespace Bench {
namespace {

constexpr std::chrono::seconds kTimeToDecide{60};

}  // namespace

const std::string& BeaconServer() {
  static const TestSupport::WebServer server(TestSupport::ServerBlock("", "location / { return 204; }"));
  static const std::string address = "http://127.0.0.1:" + std::to_string(server.Port());
  return address;
}

StoreShape ServedShape() {
  return {.beaconServer = BeaconServer()};
}

ServedAgent::ServedAgent(std::size_t stores, const std::vector<std::string>& environment)
    : stores_(stores), agent_(environment) {
  PutFile(agent_.StoresFile(), ListFile(Stores(stores, ServedShape())));
}

void ServedAgent::Start() {
  agent_.Start();
  const auto isDecided = [this] {
    for (std::size_t i = 0; i < stores_; i += std::max<std::size_t>(stores_ / 10, 1)) {
      if (agent_.Bus().Beacons("checkLocationForStore", {StoreURL(i)}) != 1) return false;
    }
    return true;
  };
  if (!agent_.Bus().WaitUntil(isDecided, kTimeToDecide)) throw std::runtime_error("stores stay undecided");
}

}  // namespace Bench

#pragma once

#include "support/BusClient.h"
#include "support/ChildProcess.h"
#include "support/TemporaryFolder.h"

#include <functional>
#include <string>

// A session bus and, in the agent's place, a service on it whose calls the test handles. One thread.
class ServiceOnBus {
 public:
  // Answers the bus library's negative error code on failure.
  using Handler = std::function<int(const std::string& method, sd_bus_message* call)>;

  explicit ServiceOnBus(Handler handler);

  // The service's connection. Its calls are handled when the test has it processed.
  [[nodiscard]] sd_bus& Connection() { return *connection_; }
  // Another program, which calls the service.
  [[nodiscard]] testsupport::BusClient& Client() { return *client_; }
  // Returns when the bus has passed on what the client has sent.
  void AwaitPassedOn();

 private:
  static int Handle(sd_bus_message* call, void* self, sd_bus_error* error);

  const Handler handler_;
  const testsupport::TemporaryFolder folder_;
  std::optional<testsupport::ChildProcess> bus_;
  BusPtr connection_;
  BusSlotPtr object_;
  std::optional<testsupport::BusClient> client_;
};

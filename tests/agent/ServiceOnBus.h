#pragma once

#include "libs/Bus/Connection.h"
#include "support/BusClient.h"
#include "support/PrivateBus.h"

// A session bus and, in the agent's place, a service on it of the test's making. One thread.
class ServiceOnBus {
 public:
  explicit ServiceOnBus(Bus::Interface interface);

  // The service's connection. Its calls are handled when the test has it processed.
  [[nodiscard]] Bus::Connection& Connection() { return connection_; }
  // Another program, which calls the service.
  [[nodiscard]] TestSupport::BusClient& Client() { return client_; }
  // Returns when the bus has passed on what the client has sent.
  void AwaitPassedOn();

 private:
  TestSupport::PrivateBus bus_;
  Bus::Connection connection_;
  Bus::Slot object_;
  TestSupport::BusClient client_;
};

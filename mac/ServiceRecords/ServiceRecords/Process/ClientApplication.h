#pragma once

#include "libs/Bus/Connection.h"
#include "libs/Bus/EventLoop.h"
#include "libs/HelperProgram/HelperProcess.h"

#include <functional>
#include <optional>
#include <vector>

namespace Agent {

// The main client application. Main thread.
class ClientApplication {
 public:
  static constexpr char kIdentifier[] = "com.morvane.quillon.velt";

  // The main loop serves the connection.
  explicit ClientApplication(Bus::Connection& bus) : bus_(bus) {}

  // Brings the client forward when it runs, otherwise launches it; waits neither for it nor for the bus.
  // Calls `notThere` when it neither runs nor can be launched.
  void BringForward(std::function<void()> notThere);

 private:
  void HandleActivated(const Bus::Result<Bus::Message>& reply);
  void Launch();
  void TellNotThere();

  Bus::Connection& bus_;
  std::vector<std::function<void()>> notThere_;
  Bus::Slot activation_;                                // until it is answered
  std::optional<HelperProgram::HelperProcess> launch_;  // while it goes on
  Bus::EventSource launchEnd_;
};

}  // namespace Agent

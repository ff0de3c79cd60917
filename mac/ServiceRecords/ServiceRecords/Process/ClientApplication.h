#pragma once

#include "libs/Bus/Connection.h"
#include "libs/Bus/EventLoop.h"
#include "libs/Display/DisplayVariables.h"
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

  // Brings the client forward when it runs, otherwise launches it on that desktop, or without one on this
  // process's; waits neither for it nor for the bus. Calls `notThere` when it neither runs nor can be
  // launched.
  void BringForward(const Display::Variables& desktop, std::function<void()> notThere);

 private:
  void HandleActivated(const Bus::Result<Bus::Message>& reply);
  void Launch();
  void TellNotThere();

  Bus::Connection& bus_;
  std::vector<std::function<void()>> notThere_;
  Display::Variables desktop_;                          // of the latest one
  Bus::Slot activation_;                                // until it is answered
  std::optional<HelperProgram::HelperProcess> launch_;  // while it goes on
  Bus::EventSource launchEnd_;
};

}  // namespace Agent

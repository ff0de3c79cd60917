#pragma once

#include "libs/Bus/SdBus.h"
#include "libs/HelperProgram/HelperProcess.h"

#include <cstdint>
#include <optional>

// The main client application. Main thread.
class ClientApplication {
 public:
  static constexpr char kIdentifier[] = "com.morvane.quillon.velt";

  // The connection is served by an event loop.
  explicit ClientApplication(sd_bus& bus) : bus_(bus) {}

  // Brings the client forward when it runs, otherwise launches it; waits neither for it nor for the bus.
  void BringForward();

 private:
  void Launch();
  static int HandleActivated(sd_bus_message* reply, void* self, sd_bus_error* error);
  static int HandleLaunched(sd_event_source* source, int descriptor, std::uint32_t events, void* self);

  sd_bus& bus_;
  BusSlotPtr activation_;                // until it is answered
  std::optional<HelperProcess> launch_;  // while it goes on
  EventSourcePtr launchEnd_;
};

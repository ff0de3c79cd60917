#pragma once

#include "SdBus.h"

#include <string>

// The main client application.
class ClientApplication {
 public:
  static constexpr char kIdentifier[] = "com.morvane.quillon.velt";

  explicit ClientApplication(sd_bus& bus) : bus_(bus) {}

  // Brings the client forward when it runs, otherwise launches it; does not wait for it. Main thread.
  void BringForward();

 private:
  sd_bus& bus_;
};

#pragma once

#include "libs/Bus/Connection.h"

class MrvBeaconSvr;

namespace Agent {

// Serves com.morvane.MrvBeaconService on a connection. Main thread.
class BeaconsBusObject {
 public:
  explicit BeaconsBusObject(MrvBeaconSvr& service) : service_(service) {}

  [[nodiscard]] Bus::Result<> Serve(Bus::Connection& bus);

 private:
  MrvBeaconSvr& service_;
  Bus::Slot object_;
};

}  // namespace Agent

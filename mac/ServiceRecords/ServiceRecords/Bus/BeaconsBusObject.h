#pragma once

#include "Bus/BusObject.h"

class MrvBeaconSvr;

// Serves com.morvane.MrvBeaconService on a connection. Main thread.
class BeaconsBusObject {
 public:
  explicit BeaconsBusObject(MrvBeaconSvr& service) : service_(service) {}

  // False when the connection does not take the object.
  [[nodiscard]] bool Serve(sd_bus& bus);

 private:
  static int CheckLocation(sd_bus_message* call, void* self, sd_bus_error* error);
  static int ExplainLocation(sd_bus_message* call, void* self, sd_bus_error* error);
  static int CurrentGateway(sd_bus_message* call, void* self, sd_bus_error* error);
  static int ReachabilityFlags(sd_bus_message* call, void* self, sd_bus_error* error);
  static const sd_bus_vtable kMethods[];

  MrvBeaconSvr& service_;
  BusSlotPtr slot_;
};

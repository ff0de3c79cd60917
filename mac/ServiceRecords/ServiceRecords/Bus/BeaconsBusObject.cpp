#include "Bus/BeaconsBusObject.h"

#include "MrvBeaconSvr.h"
#include "libs/Bus/ServiceNames.h"

namespace Agent {

Bus::Result<> BeaconsBusObject::Serve(Bus::Connection& bus) {
  Bus::Interface interface(Bus::ServiceNames::kBeaconsInterface);
  interface.Method("checkLocationForStore", {"storeURL"}, {"location"},
                   [this](const std::string& storeURL) { return service_.checkLocationForStore(storeURL); });
  interface.Method(
      "explainLocationForStore", {"storeURL"}, {"location", "reason"},
      [this](const std::string& storeURL) { return service_.explainLocationForStore(storeURL); });
  interface.Method(
      "describeLocationForStore", {"storeURL"}, {"location", "message"},
      [this](const std::string& storeURL) { return service_.describeLocationForStore(storeURL); });
  interface.Method(
      "getCurrentGatewayForStore", {"storeURL"}, {"gateway"},
      [this](const std::string& storeURL) { return service_.getCurrentGatewayForStore(storeURL); });
  interface.Method("networkReachabilityFlags", {}, {"flags"},
                   [this] { return service_.networkReachabilityFlags(); });
  return Bus::Keep(object_, bus.Serve(Bus::ServiceNames::kBeaconsPath, std::move(interface)));
}

}  // namespace Agent

#include "support/BusConnection.h"

#include <system_error>

namespace TestSupport {

void CheckBus(int result, const std::string& what) {
  if (result < 0) throw std::system_error(-result, std::generic_category(), what);
}

Bus::BusPtr ConnectToBus(const std::string& address) {
  sd_bus* bus = nullptr;
  CheckBus(sd_bus_new(&bus), "sd_bus_new");
  Bus::BusPtr owned(bus);
  CheckBus(sd_bus_set_address(bus, address.c_str()), "sd_bus_set_address");
  CheckBus(sd_bus_set_bus_client(bus, 1), "sd_bus_set_bus_client");
  CheckBus(sd_bus_start(bus), "sd_bus_start");
  return owned;
}

}  // namespace TestSupport

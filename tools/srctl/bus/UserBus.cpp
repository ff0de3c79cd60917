#include "bus/UserBus.h"

#include <cerrno>
#include <cstring>

BusPtr OpenUserBus(std::string& problem) {
  sd_bus* bus = nullptr;
  if (const int status = sd_bus_open_user(&bus); status < 0) {
    problem = "there is no session bus";
    if (status != -ENOMEDIUM) problem += std::string(" (") + std::strerror(-status) + ")";
    return nullptr;
  }
  return BusPtr(bus);
}

std::string MatchOwnerOf(const std::string& busName) {
  return "type='signal',sender='org.freedesktop.DBus',interface='org.freedesktop.DBus',"
         "member='NameOwnerChanged',arg0='" +
         busName + "'";
}

#include "UserBus.h"

#include "ServiceNames.h"

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

namespace busmatches {

std::string Notification(const std::string& name) {
  return std::string("type='signal',interface='") + ServiceNames::kNotificationsInterface +
         "',member='Posted',arg0='" + name + "'";
}

std::string OwnerOf(const std::string& busName) {
  return "type='signal',sender='org.freedesktop.DBus',interface='org.freedesktop.DBus',"
         "member='NameOwnerChanged',arg0='" +
         busName + "'";
}

}  // namespace busmatches

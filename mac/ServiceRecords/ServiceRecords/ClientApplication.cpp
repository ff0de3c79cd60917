#include "ClientApplication.h"

#include "BusObject.h"
#include "DesktopIntegration.h"
#include "ServiceNames.h"

#include <algorithm>

namespace {

// The application's object, whose path is its identifier with slashes.
std::string ObjectPath(std::string identifier) {
  std::replace(identifier.begin(), identifier.end(), '.', '/');
  return "/" + identifier;
}

}  // namespace

void ClientApplication::BringForward() {
  if (!NameHasOwner(bus_, kIdentifier)) {
    DesktopIntegration::LaunchApplication(kIdentifier);
    return;
  }
  sd_bus_message* message = nullptr;
  if (sd_bus_message_new_method_call(&bus_, &message, kIdentifier, ObjectPath(kIdentifier).c_str(),
                                     ServiceNames::kApplicationInterface, "Activate") < 0) {
    return;
  }
  const BusMessagePtr call(message);
  sd_bus_message_set_auto_start(message, 0);
  if (sd_bus_message_append(message, "a{sv}", 0) >= 0) sd_bus_send(&bus_, message, nullptr);
}

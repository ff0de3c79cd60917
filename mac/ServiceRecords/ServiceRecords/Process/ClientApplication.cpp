#include "Process/ClientApplication.h"

#include "libs/Bus/ServiceNames.h"
#include "libs/Files/Bundle.h"
#include "libs/Termination/TerminationEvent.h"

#include <sys/epoll.h>

#include <algorithm>
#include <string>
#include <utility>

namespace {

// The application's object, whose path is its identifier with slashes.
std::string ObjectPath(std::string identifier) {
  std::replace(identifier.begin(), identifier.end(), '.', '/');
  return "/" + identifier;
}

}  // namespace

void ClientApplication::BringForward() {
  sd_bus_message* message = nullptr;
  if (sd_bus_message_new_method_call(&bus_, &message, kIdentifier, ObjectPath(kIdentifier).c_str(),
                                     ServiceNames::kApplicationInterface, "Activate") < 0) {
    return;
  }
  const BusMessagePtr call(message);
  sd_bus_message_set_auto_start(message, 0);
  sd_bus_slot* slot = nullptr;
  if (sd_bus_message_append(message, "a{sv}", 0) >= 0 &&
      sd_bus_call_async(&bus_, &slot, message, HandleActivated, this, 0) >= 0) {
    activation_.reset(slot);
  }
}

int ClientApplication::HandleActivated(sd_bus_message* reply, void* self, sd_bus_error* /*error*/) {
  const bool isRunning = sd_bus_message_is_method_error(reply, SD_BUS_ERROR_NAME_HAS_NO_OWNER) == 0 &&
                         sd_bus_message_is_method_error(reply, SD_BUS_ERROR_SERVICE_UNKNOWN) == 0;
  if (!isRunning && !TerminationEvent::Requested()) static_cast<ClientApplication*>(self)->Launch();
  return 0;
}

// By a program that lies beside the agent, so that nothing of the launch stays here.
void ClientApplication::Launch() {
  if (launch_) return;
  auto program = HelperProcess::Start(Bundle::Main().Path() / "servicerecord-launch", {kIdentifier});
  if (!program) return;
  launch_.emplace(std::move(*program));
  sd_event_source* source = nullptr;
  sd_event_add_io(sd_bus_get_event(&bus_), &source, launch_->Ended(), EPOLLIN, HandleLaunched, this);
  launchEnd_.reset(source);
}

int ClientApplication::HandleLaunched(sd_event_source* /*source*/, int /*descriptor*/,
                                      std::uint32_t /*events*/, void* self) {
  auto& client = *static_cast<ClientApplication*>(self);
  client.launchEnd_.reset();
  client.launch_.reset();
  return 0;
}

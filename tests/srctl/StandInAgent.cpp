#include "srctl/StandInAgent.h"

#include "libs/Bus/ServiceNames.h"
#include "support/BusConnection.h"

using testsupport::CheckBus;

StandInAgent::StandInAgent(const std::string& address) : bus_(testsupport::ConnectToBus(address)) {
  sd_bus* const bus = bus_.get();
  CheckBus(sd_bus_add_object(bus, nullptr, ServiceNames::kBeaconsPath, Answer, this), "sd_bus_add_object");
  for (const char* name : {ServiceNames::kBeacons, ServiceNames::kServiceRecords}) {
    CheckBus(sd_bus_request_name(bus, name, 0), name);
  }
}

int StandInAgent::Answer(sd_bus_message* message, void* self, sd_bus_error* /*error*/) {
  auto& agent = *static_cast<StandInAgent*>(self);
  if (sd_bus_message_is_method_call(message, ServiceNames::kBeaconsInterface, "networkReachabilityFlags") >
      0) {
    return sd_bus_reply_method_return(message, "u", agent.flags);
  }
  if (sd_bus_message_is_method_call(message, ServiceNames::kBeaconsInterface, "checkLocationForStore") <= 0) {
    return 0;
  }
  const char* url = nullptr;
  if (const int result = sd_bus_message_read_basic(message, 's', &url); result < 0) return result;
  agent.questions_.emplace_back(url);
  return sd_bus_reply_method_return(message, "t", agent.location);
}

void StandInAgent::AnnounceLocation(const std::string& storeURL) {
  CheckBus(
      sd_bus_emit_signal(bus_.get(), ServiceNames::kNotificationsPath, ServiceNames::kNotificationsInterface,
                         "Posted", "ss", ServiceNames::kLocationChangedNotification, storeURL.c_str()),
      "Posted");
}

bool StandInAgent::ServeUntil(const std::function<bool()>& condition, std::chrono::milliseconds limit) {
  const auto deadline = std::chrono::steady_clock::now() + limit;
  while (!condition()) {
    if (std::chrono::steady_clock::now() >= deadline) return false;
    const int handled = sd_bus_process(bus_.get(), nullptr);
    CheckBus(handled, "sd_bus_process");
    // The end of a process tells the bus nothing, so the condition is looked at again now and then.
    constexpr std::uint64_t kStepMicroseconds = 20'000;
    if (handled == 0) CheckBus(sd_bus_wait(bus_.get(), kStepMicroseconds), "sd_bus_wait");
  }
  return true;
}

#include "srctl/StandInAgent.h"

#include "libs/Bus/ServiceNames.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace {

template <class Value>
Value Got(Bus::Result<Value> result) {
  if (!result) throw std::runtime_error("stand-in agent: " + result.Failure().text);
  return std::move(*result);
}

}  // namespace

StandInAgent::StandInAgent(const std::string& address) : bus_(Got(Bus::Connection::To(address))) {
  Bus::Interface interface(Bus::ServiceNames::kBeaconsInterface);
  interface.Method("networkReachabilityFlags", {}, {}, [this] { return flags; });
  interface.Method("checkLocationForStore", {}, {}, [this](const std::string& storeURL) {
    questions_.push_back(storeURL);
    return location;
  });
  object_ = Got(bus_.Serve(Bus::ServiceNames::kBeaconsPath, std::move(interface)));
  for (const char* name : {Bus::ServiceNames::kBeacons, Bus::ServiceNames::kServiceRecords})
    Got(bus_.RequestName(name));
}

void StandInAgent::AnnounceLocation(const std::string& storeURL) {
  Got(bus_.Emit(Bus::ServiceNames::kNotificationsPath, Bus::ServiceNames::kNotificationsInterface, "Posted",
                std::string(Bus::ServiceNames::kLocationChangedNotification), storeURL));
}

bool StandInAgent::ServeUntil(const std::function<bool()>& condition, std::chrono::milliseconds limit) {
  const auto deadline = std::chrono::steady_clock::now() + limit;
  while (std::chrono::steady_clock::now() < deadline) {
    // The end of a process tells the bus nothing, so the condition is looked at again now and then.
    const auto step = std::chrono::steady_clock::now() + std::chrono::milliseconds(20);
    if (Got(bus_.ProcessUntil(condition, std::min(step, deadline)))) return true;
  }
  return condition();
}

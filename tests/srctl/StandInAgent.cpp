#include "srctl/StandInAgent.h"

#include "libs/Bus/ServiceNames.h"

#include <algorithm>
#include <stdexcept>
#include <tuple>
#include <utility>

namespace {

namespace Names = Bus::ServiceNames;
using PropertyList::Dictionary;

template <class Value>
Value Got(Bus::Result<Value> result) {
  if (!result) throw std::runtime_error("stand-in agent: " + result.Failure().text);
  return std::move(*result);
}

}  // namespace

StandInAgent::StandInAgent(const std::string& address) : bus_(Got(Bus::Connection::To(address))) {
  ServeBeacons();
  ServeOpenings();
  for (const char* name : {Names::kBeacons, Names::kServiceRecords}) Got(bus_.RequestName(name));
}

void StandInAgent::ServeStores(const std::vector<Dictionary>& stores) {
  Bus::Interface interface(Names::kServiceRecordsInterface);
  interface.Method("uiBundlePath", {}, {}, [] { return std::string(); });
  interface.Method("allStores", {}, {}, [stores] { return stores; });
  interface.Property("stateOfSavedStores", [] { return std::string("good"); });
  stores_ = Got(bus_.Serve(Names::kServiceRecordsPath, std::move(interface)));
}

void StandInAgent::ServeBeacons() {
  Bus::Interface interface(Names::kBeaconsInterface);
  interface.Method("networkReachabilityFlags", {}, {}, [this] { return flags; });
  interface.Method("checkLocationForStore", {}, {}, [this](const std::string& storeURL) {
    questions_.push_back(storeURL);
    return location;
  });
  interface.Method("explainLocationForStore", {}, {}, [this](const std::string& /*storeURL*/) {
    ++explanations_;
    return std::tuple(location, reason);
  });
  beacons_ = Got(bus_.Serve(Names::kBeaconsPath, std::move(interface)));
}

void StandInAgent::ServeOpenings() {
  Bus::Interface interface(Names::kOpeningsInterface);
  interface.Method(
      "Open", {}, {},
      [this](const std::string& path, const Dictionary& /*options*/) -> Bus::Result<std::uint64_t> {
        if (!takesFiles) return Bus::Error::LimitsExceeded("too many");
        opened_.push_back(path);
        return static_cast<std::uint64_t>(opened_.size());
      });
  openings_ = Got(bus_.Serve(Names::kOpeningsPath, std::move(interface)));
}

void StandInAgent::AnnounceLocation(const std::string& storeURL) {
  Got(bus_.Emit(Names::kNotificationsPath, Names::kNotificationsInterface, "Posted",
                std::string(Names::kLocationChangedNotification), storeURL));
}

void StandInAgent::Finish(std::uint64_t id, const std::string& outcome,
                          const std::vector<Dictionary>& stores) {
  Got(bus_.Emit(Names::kOpeningsPath, Names::kOpeningsInterface, Names::kFinishedSignal, id, outcome,
                stores));
}

void StandInAgent::AnnounceChanges(const std::vector<Dictionary>& changes) {
  Got(bus_.Emit(Names::kOpeningsPath, Names::kOpeningsInterface, Names::kStoresChangedSignal, changes));
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

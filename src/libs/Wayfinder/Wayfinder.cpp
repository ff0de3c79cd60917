#include "libs/Wayfinder/Wayfinder.h"

#include "libs/Wayfinder/DefaultRoute.h"

#include <atomic>

namespace {

std::atomic<WFLogFunc> g_logFunction = nullptr;

void Log(const std::string& message) {
  if (const WFLogFunc log = g_logFunction; log != nullptr) log(message.c_str());
}

}  // namespace

void WFSetCustomLogFunc(WFLogFunc logFunction) {
  g_logFunction = logFunction;
}

Wayfinder& Wayfinder::sharedInstance() {
  static Wayfinder instance;
  return instance;
}

std::uint32_t Wayfinder::locationRelativeToStoreURL(const std::string& /*url*/) {
  return kDeciding;
}

std::uint32_t Wayfinder::networkReachabilityFlags() {
  const std::optional<DefaultRoute> route = CurrentDefaultRoute();
  if (!route) return 0;
  return kReachable | (route->throughTunnel ? kTransientConnection : 0) | (route->direct ? kIsDirect : 0);
}

void Wayfinder::setAllServiceRecordsToList(std::optional<PropertyList::Array> stores) {
  const std::size_t count = stores ? stores->size() : 0;
  {
    const std::lock_guard lock(mutex_);
    stores_ = std::move(stores);
  }
  Log("store list replaced, stores: " + std::to_string(count));
}

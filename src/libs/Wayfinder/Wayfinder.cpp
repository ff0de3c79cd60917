#include "libs/Wayfinder/Wayfinder.h"

#include "libs/Text/LogText.h"
#include "libs/Wayfinder/LocationService.h"
#include "libs/Wayfinder/Probing/TlsTrust.h"

#include <atomic>

namespace {

// Constant-initialised and without a destructor, so that the library's thread may use them to its end.
constinit std::atomic<WFLogFunc> g_logFunction = nullptr;
constinit std::atomic<WFLocationFunc> g_locationFunction = nullptr;

void Log(const std::string& message) {
  if (const WFLogFunc log = g_logFunction; log != nullptr) log(util::LogText::Line(message).c_str());
}

void GiveOut(const std::string& storeURL, Wayfinding::NetworkLocation location) {
  const WFLocationFunc observer = g_locationFunction;
  if (observer != nullptr) observer(storeURL.c_str(), location);
}

Wayfinding::LocationParts Parts() {
  Wayfinding::LocationParts parts = Wayfinding::LocationParts::Defaults();
  parts.log = Log;
  parts.changed = GiveOut;
  return parts;
}

}  // namespace

void WFSetCustomLogFunc(WFLogFunc logFunction) {
  g_logFunction = logFunction;
}

void WFSetLocationFunc(WFLocationFunc locationFunction) {
  g_locationFunction = locationFunction;
}

Wayfinder::Wayfinder() {
  // At the exit of the process the thread has to end before the TLS library cleans up.
  Wayfinding::InitializeTls();
  service_ = std::make_unique<Wayfinding::LocationService>(Parts());
}
Wayfinder::~Wayfinder() = default;

Wayfinder& Wayfinder::sharedInstance() {
  static Wayfinder instance;
  return instance;
}

std::uint32_t Wayfinder::locationRelativeToStoreURL(const std::string& url) {
  return service_->DecisionOf(url).location;
}

Wayfinding::LocationDecision Wayfinder::explainLocationRelativeToStoreURL(const std::string& url) {
  return service_->DecisionOf(url);
}

std::uint32_t Wayfinder::networkReachabilityFlags() {
  return service_->Flags();
}

void Wayfinder::setAllServiceRecordsToList(std::optional<PropertyList::SharedDictionaries> stores) {
  const PropertyList::SharedDictionaries list =
      std::move(stores).value_or(PropertyList::SharedDictionaries());
  service_->SetStores(list);
  Log("store list replaced, stores: " + std::to_string(list.size()));
}

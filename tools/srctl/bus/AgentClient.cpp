#include "bus/AgentClient.h"

#include "bus/DictionaryEntries.h"
#include "bus/UserBus.h"
#include "libs/Bus/ServiceNames.h"
#include "libs/Wayfinder/Wayfinder.h"
#include "libs/Wording/MessageDictionary.h"

#include <cerrno>
#include <utility>

namespace Srctl {
namespace {

using PropertyList::Dictionary;
using std::chrono::steady_clock;

constexpr Bus::Service kStores{Bus::ServiceNames::kServiceRecords, Bus::ServiceNames::kServiceRecordsPath,
                               Bus::ServiceNames::kServiceRecordsInterface};
constexpr Bus::Service kBeacons{Bus::ServiceNames::kBeacons, Bus::ServiceNames::kBeaconsPath,
                                Bus::ServiceNames::kBeaconsInterface};

// The agent may first have to be started, and serves one call after the other.
constexpr Bus::CallOptions kSoon{.timeOut = std::chrono::seconds(60)};
// A change waits as long as a question to the user is open, and is made then whoever still waits.
constexpr Bus::CallOptions kAtLast{.timeOut = Bus::kForEver};

// How long somebody waits without wondering.
constexpr std::chrono::seconds kPatience{2};

constexpr char kUnreadableAnswer[] = "its answer cannot be read";

bool ReadGateway(const Dictionary& dictionary, GatewayInfo& gateway) {
  DictionaryEntries entries(dictionary);
  entries.Take("GatewayName", gateway.name);
  entries.Take("GatewayURL", gateway.url);
  entries.Take("IsDefault", gateway.isDefault);
  return entries.AreAsExpected();
}

bool ReadGateways(const PropertyList::Array& array, std::vector<GatewayInfo>& gateways) {
  for (const PropertyList::Value& item : array) {
    const auto* dictionary = item.As<Dictionary>();
    if (dictionary == nullptr || !ReadGateway(*dictionary, gateways.emplace_back())) return false;
  }
  return true;
}

bool ReadStore(const Dictionary& dictionary, StoreInfo& store) {
  DictionaryEntries entries(dictionary);
  entries.Take("StoreName", store.name);
  entries.Take("StoreURL", store.url);
  entries.Take("StoreType", store.type);
  entries.Take("StoreID", store.id);
  const PropertyList::Array* const gateways = entries.TakeArray("StoreGateways");
  return entries.AreAsExpected() && (gateways == nullptr || ReadGateways(*gateways, store.gateways));
}

bool ReadCurrentGateway(const Dictionary& dictionary, CurrentGatewayInfo& gateway) {
  DictionaryEntries entries(dictionary);
  entries.Take("GatewayURL", gateway.url);
  entries.Take("GatewayName", gateway.name);
  entries.Take("GatewayAuthType", gateway.authentication);
  entries.Take("GatewayEdition", gateway.edition);
  return entries.AreAsExpected();
}

}  // namespace

std::optional<AgentClient> AgentClient::Connect(std::string& problem, std::function<void()> isLate) {
  std::optional<Bus::Connection> bus = OpenUserBus(problem);
  if (!bus) return std::nullopt;
  return AgentClient(std::move(*bus), std::move(isLate));
}

void AgentClient::Fail(const std::string& what, const Bus::Error& error) {
  problem_ = what + ": " + error.text;
}

template <class... Arguments>
Bus::Result<Bus::Message> AgentClient::CallPatiently(const Bus::Service& service,
                                                     const Bus::CallOptions& options, const char* method,
                                                     const Arguments&... arguments) {
  std::optional<Bus::Result<Bus::Message>> reply;
  const auto take = [&reply](const Bus::Result<Bus::Message>& came) { reply.emplace(came); };
  const auto isThere = [&reply] { return reply.has_value(); };
  const Bus::Result<Bus::Slot> call = bus_.CallAsync(service, options, method, take, arguments...);
  if (!call) return call.Failure();
  Bus::Result<bool> waited = bus_.ProcessUntil(isThere, steady_clock::now() + kPatience);
  if (waited && !reply) {
    if (isLate_) std::exchange(isLate_, {})();
    waited = bus_.ProcessUntil(isThere, steady_clock::time_point::max());  // the call has a time of its own
  }
  return waited ? *reply : waited.Failure();
}

template <class... Results>
std::optional<Bus::Reading<Results...>> AgentClient::Read(const Bus::Result<Bus::Message>& reply) {
  if (!reply) {
    problem_ = reply.Failure().text;
    return std::nullopt;
  }
  Bus::Result<Bus::Reading<Results...>> results = reply->Read<Results...>();
  if (results) return std::move(*results);
  Fail(kUnreadableAnswer, results.Failure());
  return std::nullopt;
}

template <class... Results, class... Arguments>
std::optional<Bus::Reading<Results...>> AgentClient::Ask(const Bus::Service& service,
                                                         const Bus::CallOptions& options, const char* method,
                                                         const Arguments&... arguments) {
  return Read<Results...>(CallPatiently(service, options, method, arguments...));
}

std::optional<std::vector<StoreInfo>> AgentClient::AllStores() {
  const auto dictionaries = Ask<std::vector<Dictionary>>(kStores, kSoon, "allStores");
  if (!dictionaries) return std::nullopt;
  std::vector<StoreInfo> stores;
  for (const Dictionary& dictionary : *dictionaries) {
    if (ReadStore(dictionary, stores.emplace_back())) continue;
    Fail(kUnreadableAnswer, Bus::Error::OfResult(-ENXIO));
    return std::nullopt;
  }
  return stores;
}

std::optional<StoreInfo> AgentClient::StoreForID(const std::string& id) {
  const auto dictionary = Ask<Dictionary>(kStores, kSoon, "storeForID", id);
  StoreInfo store;
  if (!dictionary) return std::nullopt;
  if (ReadStore(*dictionary, store)) return store;
  Fail(kUnreadableAnswer, Bus::Error::OfResult(-ENXIO));
  return std::nullopt;
}

std::optional<bool> AgentClient::DeleteStore(const std::string& id) {
  return Ask<bool>(kStores, kAtLast, "deleteStore", id);
}

std::optional<bool> AgentClient::SetDefaultGatewayForStoreID(const std::string& id,
                                                             const std::string& gateway) {
  return Ask<bool>(kStores, kAtLast, "setDefaultGatewayForStoreIDTo", id, gateway);
}

std::optional<bool> AgentClient::SetDefaultGatewayForStoreURL(const std::string& url,
                                                              const std::string& gateway) {
  return Ask<bool>(kStores, kAtLast, "setDefaultGatewayForStoreURLTo", url, gateway);
}

bool AgentClient::WaitFor(const std::function<bool()>& done, steady_clock::time_point deadline) {
  const Bus::Result<bool> result = bus_.ProcessUntil(done, deadline);
  if (!result) Fail("the connection to it broke", result.Failure());
  return static_cast<bool>(result);
}

bool AgentClient::HandOverDiscoveryDocument(const std::string& document) {
  return Ask<>(kStores, kAtLast, "handleDiscoveryDocument", document).has_value();
}

std::optional<std::string> AgentClient::UIBundlePath() {
  return Ask<std::string>(kStores, kSoon, "uiBundlePath");
}

std::optional<std::string> AgentClient::StateOfSavedStores() {
  const Bus::Result<std::string> state = bus_.Property<std::string>(kStores, {}, "stateOfSavedStores");
  if (state) return *state;
  problem_ = state.Failure().text;
  return std::nullopt;
}

std::optional<std::uint64_t> AgentClient::LocationForStore(const std::string& url) {
  return Ask<std::uint64_t>(kBeacons, kSoon, "checkLocationForStore", url);
}

std::optional<LocationInfo> AgentClient::ExplainedLocationForStore(const std::string& url) {
  const Bus::Result<Bus::Message> reply = CallPatiently(kBeacons, kSoon, "describeLocationForStore", url);
  if (!reply && reply.Failure().IsOfUnknownMethod()) return LocationForStoreInEnglish(url);
  const auto described = Read<std::uint64_t, Dictionary>(reply);
  if (!described) return std::nullopt;
  const auto& [location, message] = *described;
  return LocationInfo{location, Wording::MessageDictionary::Read(message)};
}

std::optional<LocationInfo> AgentClient::LocationForStoreInEnglish(const std::string& url) {
  const auto explained = Ask<std::uint64_t, std::string>(kBeacons, kSoon, "explainLocationForStore", url);
  if (!explained) return std::nullopt;
  const auto& [location, line] = *explained;
  return LocationInfo{location, line};
}

std::optional<std::uint64_t> AgentClient::DecidedLocationForStore(const std::string& url,
                                                                  std::chrono::seconds limit) {
  const auto deadline = steady_clock::now() + limit;
  bool mayBeDecided = false;  // declared before the slots, whose handlers refer to it
  std::vector<Bus::Slot> slots;
  // An agent that comes in place of the asked one knows nothing of the question.
  for (const std::string& rule :
       {Bus::ServiceNames::NotificationMatch(Bus::ServiceNames::kLocationChangedNotification),
        Bus::MatchOwnerOf(Bus::ServiceNames::kBeacons)}) {
    const auto raise = [&mayBeDecided](const Bus::Message& /*signal*/) { mayBeDecided = true; };
    if (const auto kept = Bus::Keep(slots.emplace_back(), bus_.Match(rule, raise)); !kept) {
      Fail("it could not be asked", kept.Failure());
      return std::nullopt;
    }
  }
  for (;;) {
    const std::optional<std::uint64_t> location = LocationForStore(url);
    if (location != Wayfinder::kDeciding || steady_clock::now() >= deadline) return location;
    if (!WaitFor([&mayBeDecided] { return mayBeDecided; }, deadline)) return std::nullopt;
    mayBeDecided = false;
  }
}

std::optional<std::vector<CurrentGatewayInfo>> AgentClient::CurrentGatewayForStore(const std::string& url) {
  const auto dictionary = Ask<Dictionary>(kBeacons, kSoon, "getCurrentGatewayForStore", url);
  if (!dictionary) return std::nullopt;
  std::vector<CurrentGatewayInfo> found;
  if (dictionary->Empty() || ReadCurrentGateway(*dictionary, found.emplace_back())) return found;
  Fail(kUnreadableAnswer, Bus::Error::OfResult(-ENXIO));
  return std::nullopt;
}

std::optional<std::uint32_t> AgentClient::ReachabilityFlags() {
  return Ask<std::uint32_t>(kBeacons, kSoon, "networkReachabilityFlags");
}

bool AgentClient::PostNotification(const std::string& name, const std::string& object) {
  Bus::Result<> sent = bus_.Emit(Bus::ServiceNames::kNotificationsPath,
                                 Bus::ServiceNames::kNotificationsInterface, "Posted", name, object);
  if (sent) sent = bus_.Flush();
  if (!sent) Fail("the notification could not be sent", sent.Failure());
  return static_cast<bool>(sent);
}

}  // namespace Srctl

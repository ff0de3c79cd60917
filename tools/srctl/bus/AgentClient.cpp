#include "bus/AgentClient.h"

#include "bus/DictionaryReading.h"
#include "bus/UserBus.h"
#include "libs/Bus/BusError.h"
#include "libs/Bus/ServiceNames.h"
#include "libs/Wayfinder/Wayfinder.h"

#include <cstdlib>
#include <cstring>
#include <memory>
#include <set>

struct BusService {
  const char* name;
  const char* path;
  const char* interface;
};

namespace {

using dictionaryreading::ReadDictionaries;
using dictionaryreading::ReadDictionary;
using std::chrono::steady_clock;

constexpr BusService kStores{ServiceNames::kServiceRecords, ServiceNames::kServiceRecordsPath,
                             ServiceNames::kServiceRecordsInterface};
constexpr BusService kBeacons{ServiceNames::kBeacons, ServiceNames::kBeaconsPath,
                              ServiceNames::kBeaconsInterface};

// The agent may first have to be started, and serves one call after the other.
constexpr std::chrono::seconds kAnswerTime{60};
constexpr std::chrono::microseconds kForever = std::chrono::microseconds::max();

std::uint64_t TimeOutValue(std::chrono::microseconds timeOut) {
  return timeOut == kForever ? UINT64_MAX : static_cast<std::uint64_t>(timeOut.count());
}

std::chrono::microseconds TimeUntil(steady_clock::time_point deadline) {
  if (deadline == steady_clock::time_point::max()) return kForever;
  return std::chrono::ceil<std::chrono::microseconds>(deadline - steady_clock::now());
}

int ReadGateway(sd_bus_message* message, GatewayInfo& gateway) {
  return ReadDictionary(message, {{"GatewayName", {"s", dictionaryreading::Text(gateway.name)}},
                                  {"GatewayURL", {"s", dictionaryreading::Text(gateway.url)}},
                                  {"IsDefault", {"b", dictionaryreading::Flag(gateway.isDefault)}}});
}

int ReadStore(sd_bus_message* message, StoreInfo& store) {
  const dictionaryreading::ValueReader gateways = [&store](sd_bus_message* inner) {
    return ReadDictionaries(inner, store.gateways, ReadGateway);
  };
  return ReadDictionary(message, {{"StoreName", {"s", dictionaryreading::Text(store.name)}},
                                  {"StoreURL", {"s", dictionaryreading::Text(store.url)}},
                                  {"StoreType", {"t", dictionaryreading::Number(store.type)}},
                                  {"StoreID", {"s", dictionaryreading::Text(store.id)}},
                                  {"StoreGateways", {"aa{sv}", gateways}}});
}

// "Nothing" is a dictionary without entries.
int ReadCurrentGateway(sd_bus_message* message, std::vector<CurrentGatewayInfo>& found) {
  CurrentGatewayInfo gateway;
  bool isThere = false;
  const auto url = [&](sd_bus_message* inner) {
    isThere = true;
    return dictionaryreading::Text(gateway.url)(inner);
  };
  const int status =
      ReadDictionary(message, {{"GatewayURL", {"s", url}},
                               {"GatewayName", {"s", dictionaryreading::Text(gateway.name)}},
                               {"GatewayAuthType", {"t", dictionaryreading::Number(gateway.authentication)}},
                               {"GatewayEdition", {"t", dictionaryreading::Number(gateway.edition)}}});
  if (isThere) found.push_back(gateway);
  return status;
}

// What happened on the connection while a file was being opened, in the order in which it arrived.
struct OpeningProgress {
  std::set<std::string> announcers;
  bool answered = false;
  bool accepted = false;
  std::string problem;
};

int NoteAnnouncement(sd_bus_message* signal, void* progress, sd_bus_error* /*error*/) {
  if (const char* sender = sd_bus_message_get_sender(signal); sender != nullptr) {
    static_cast<OpeningProgress*>(progress)->announcers.insert(sender);
  }
  return 0;
}

int NoteAnswer(sd_bus_message* reply, void* userData, sd_bus_error* /*error*/) {
  auto& progress = *static_cast<OpeningProgress*>(userData);
  progress.answered = true;
  if (const sd_bus_error* error = sd_bus_message_get_error(reply); error != nullptr) {
    progress.problem = error->message != nullptr ? error->message : error->name;
  } else if (const char* sender = sd_bus_message_get_sender(reply); sender != nullptr) {
    progress.accepted = progress.announcers.contains(sender);
  }
  return 0;
}

int RaiseFlag(sd_bus_message* /*signal*/, void* flag, sd_bus_error* /*error*/) {
  *static_cast<bool*>(flag) = true;
  return 0;
}

}  // namespace

std::optional<AgentClient> AgentClient::Connect(std::string& problem) {
  BusPtr bus = OpenUserBus(problem);
  if (!bus) return std::nullopt;
  return AgentClient(std::move(bus));
}

void AgentClient::Fail(const std::string& what, int error) {
  problem_ = what + ": " + std::strerror(-error);
}

BusMessagePtr AgentClient::NewCall(const BusService& service, const char* method,
                                   const std::vector<std::string>& arguments) {
  sd_bus_message* raw = nullptr;
  int status =
      sd_bus_message_new_method_call(bus_.get(), &raw, service.name, service.path, service.interface, method);
  BusMessagePtr call(raw);
  for (auto argument = arguments.begin(); status >= 0 && argument != arguments.end(); ++argument) {
    status = sd_bus_message_append_basic(call.get(), 's', argument->c_str());
  }
  if (status >= 0) return call;
  Fail(std::string("the call of ") + method + " could not be made", status);
  return nullptr;
}

BusMessagePtr AgentClient::Call(const BusService& service, const char* method,
                                const std::vector<std::string>& arguments,
                                std::chrono::microseconds timeOut) {
  const BusMessagePtr call = NewCall(service, method, arguments);
  if (!call) return nullptr;
  BusError error;
  sd_bus_message* reply = nullptr;
  const int status = sd_bus_call(bus_.get(), call.get(), TimeOutValue(timeOut), error.Get(), &reply);
  if (status < 0) problem_ = error.Text(status);
  return BusMessagePtr(reply);
}

template <class Result, class Reader>
std::optional<Result> AgentClient::CallAndRead(const BusService& service, const char* method,
                                               const std::vector<std::string>& arguments, Reader read) {
  const BusMessagePtr reply = Call(service, method, arguments, kAnswerTime);
  if (!reply) return std::nullopt;
  Result result{};
  if (const int status = read(reply.get(), result); status < 0) {
    Fail("its answer cannot be read", status);
    return std::nullopt;
  }
  return result;
}

std::optional<bool> AgentClient::CallForBoolean(const char* method,
                                                const std::vector<std::string>& arguments) {
  return CallAndRead<bool>(kStores, method, arguments, [](sd_bus_message* reply, bool& result) {
    int value = 0;
    const int status = sd_bus_message_read_basic(reply, 'b', &value);
    result = value != 0;
    return status;
  });
}

std::optional<std::vector<StoreInfo>> AgentClient::AllStores() {
  return CallAndRead<std::vector<StoreInfo>>(kStores, "allStores", {},
                                             [](sd_bus_message* reply, std::vector<StoreInfo>& stores) {
                                               return ReadDictionaries(reply, stores, ReadStore);
                                             });
}

std::optional<StoreInfo> AgentClient::StoreForID(const std::string& id) {
  return CallAndRead<StoreInfo>(kStores, "storeForID", {id}, ReadStore);
}

std::optional<bool> AgentClient::DeleteStore(const std::string& id) {
  return CallForBoolean("deleteStore", {id});
}

std::optional<bool> AgentClient::SetDefaultGatewayForStoreID(const std::string& id,
                                                             const std::string& gateway) {
  return CallForBoolean("setDefaultGatewayForStoreIDTo", {id, gateway});
}

std::optional<bool> AgentClient::SetDefaultGatewayForStoreURL(const std::string& url,
                                                              const std::string& gateway) {
  return CallForBoolean("setDefaultGatewayForStoreURLTo", {url, gateway});
}

std::optional<bool> AgentClient::OpenFile(const std::string& absolutePath) {
  const BusMessagePtr call = NewCall(kStores, "handleServiceRecordFTA", {absolutePath});
  if (!call) return std::nullopt;

  // Declared before the slots, which refer to it.
  OpeningProgress progress;
  sd_bus_slot* slot = nullptr;
  int status = sd_bus_add_match(
      bus_.get(), &slot, ServiceNames::NotificationMatch(ServiceNames::kStoresUpdatedNotification).c_str(),
      NoteAnnouncement, &progress);
  const BusSlotPtr match(slot);
  slot = nullptr;
  if (status >= 0) {
    status = sd_bus_call_async(bus_.get(), &slot, call.get(), NoteAnswer, &progress, TimeOutValue(kForever));
  }
  const BusSlotPtr pending(slot);
  if (status < 0) Fail("it could not be asked", status);
  if (status < 0 || !WaitFor(progress.answered, steady_clock::time_point::max())) return std::nullopt;
  if (progress.problem.empty()) return progress.accepted;
  problem_ = progress.problem;
  return std::nullopt;
}

bool AgentClient::WaitFor(const bool& flag, steady_clock::time_point deadline) {
  int status = 0;
  while (status >= 0 && !flag) {
    status = sd_bus_process(bus_.get(), nullptr);
    if (status != 0) continue;
    const std::chrono::microseconds left = TimeUntil(deadline);
    if (left.count() <= 0) return true;
    status = sd_bus_wait(bus_.get(), TimeOutValue(left));
  }
  if (status < 0) Fail("the connection to it broke", status);
  return status >= 0;
}

bool AgentClient::HandOverDiscoveryDocument(const std::string& document) {
  return Call(kStores, "handleDiscoveryDocument", {document}, kForever) != nullptr;
}

std::optional<std::string> AgentClient::UIBundlePath() {
  return CallAndRead<std::string>(kStores, "uiBundlePath", {}, [](sd_bus_message* reply, std::string& path) {
    return dictionaryreading::Text(path)(reply);
  });
}

std::optional<std::string> AgentClient::StateOfSavedStores() {
  BusError error;
  char* text = nullptr;
  const int status = sd_bus_get_property_string(bus_.get(), kStores.name, kStores.path, kStores.interface,
                                                "stateOfSavedStores", error.Get(), &text);
  const std::unique_ptr<char, decltype(&std::free)> state(text, std::free);
  if (status >= 0) return state.get();
  problem_ = error.Text(status);
  return std::nullopt;
}

std::optional<std::uint64_t> AgentClient::LocationForStore(const std::string& url) {
  return CallAndRead<std::uint64_t>(kBeacons, "checkLocationForStore", {url},
                                    [](sd_bus_message* reply, std::uint64_t& location) {
                                      return sd_bus_message_read_basic(reply, 't', &location);
                                    });
}

std::optional<LocationInfo> AgentClient::ExplainedLocationForStore(const std::string& url) {
  return CallAndRead<LocationInfo>(kBeacons, "explainLocationForStore", {url},
                                   [](sd_bus_message* reply, LocationInfo& info) {
                                     const int status = sd_bus_message_read_basic(reply, 't', &info.value);
                                     return status < 0 ? status : dictionaryreading::Text(info.reason)(reply);
                                   });
}

std::optional<std::uint64_t> AgentClient::DecidedLocationForStore(const std::string& url,
                                                                  std::chrono::seconds limit) {
  const auto deadline = steady_clock::now() + limit;
  bool mayBeDecided = false;  // declared before the slots, which refer to it
  std::vector<BusSlotPtr> slots;
  // An agent that comes in place of the asked one knows nothing of the question.
  for (const std::string& match :
       {ServiceNames::NotificationMatch(ServiceNames::kLocationChangedNotification),
        MatchOwnerOf(ServiceNames::kBeacons)}) {
    sd_bus_slot* slot = nullptr;
    const int status = sd_bus_add_match(bus_.get(), &slot, match.c_str(), RaiseFlag, &mayBeDecided);
    slots.emplace_back(slot);
    if (status < 0) {
      Fail("it could not be asked", status);
      return std::nullopt;
    }
  }
  for (;;) {
    const std::optional<std::uint64_t> location = LocationForStore(url);
    if (location != Wayfinder::kDeciding || steady_clock::now() >= deadline) return location;
    if (!WaitFor(mayBeDecided, deadline)) return std::nullopt;
    mayBeDecided = false;
  }
}

std::optional<std::vector<CurrentGatewayInfo>> AgentClient::CurrentGatewayForStore(const std::string& url) {
  return CallAndRead<std::vector<CurrentGatewayInfo>>(kBeacons, "getCurrentGatewayForStore", {url},
                                                      ReadCurrentGateway);
}

std::optional<std::uint32_t> AgentClient::ReachabilityFlags() {
  return CallAndRead<std::uint32_t>(kBeacons, "networkReachabilityFlags", {},
                                    [](sd_bus_message* reply, std::uint32_t& flags) {
                                      return sd_bus_message_read_basic(reply, 'u', &flags);
                                    });
}

bool AgentClient::PostNotification(const std::string& name, const std::string& object) {
  int status =
      sd_bus_emit_signal(bus_.get(), ServiceNames::kNotificationsPath, ServiceNames::kNotificationsInterface,
                         "Posted", "ss", name.c_str(), object.c_str());
  if (status >= 0) status = sd_bus_flush(bus_.get());
  if (status < 0) Fail("the notification could not be sent", status);
  return status >= 0;
}

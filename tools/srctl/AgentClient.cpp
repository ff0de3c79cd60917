#include "AgentClient.h"

#include <cerrno>
#include <cstring>
#include <functional>
#include <set>

namespace {

constexpr char kService[] = "com.morvane.ServiceRecords";
constexpr char kObject[] = "/com/morvane/ServiceRecords";
constexpr char kInterface[] = "com.morvane.MrvServiceRecordsService";
constexpr char kNotificationsObject[] = "/com/morvane/DistributedNotifications";
constexpr char kNotificationsInterface[] = "com.morvane.DistributedNotifications";
constexpr char kStoresUpdated[] =
    "type='signal',interface='com.morvane.DistributedNotifications',member='Posted',"
    "arg0='MRVServiceRecordStoresUpdated'";

// The agent may first have to be started, and serves one call after the other.
constexpr std::chrono::seconds kAnswerTime{60};
constexpr std::chrono::microseconds kForever = std::chrono::microseconds::max();

class BusError {
 public:
  BusError() = default;
  ~BusError() { sd_bus_error_free(&error_); }
  BusError(const BusError&) = delete;
  BusError& operator=(const BusError&) = delete;

  sd_bus_error* Get() { return &error_; }
  [[nodiscard]] std::string Text(int status) const {
    return error_.message != nullptr ? error_.message : std::strerror(-status);
  }

 private:
  sd_bus_error error_ = SD_BUS_ERROR_NULL;
};

std::uint64_t TimeOutValue(std::chrono::microseconds timeOut) {
  return timeOut == kForever ? UINT64_MAX : static_cast<std::uint64_t>(timeOut.count());
}

// A reader of one value of a dictionary: gets the message inside the variant, returns a negative error code
// or a value above zero.
using ValueReader = std::function<int(sd_bus_message*)>;
using ValueReaders = std::vector<std::pair<std::string, std::pair<const char*, ValueReader>>>;

ValueReader Text(std::string& out) {
  return [&out](sd_bus_message* message) {
    const char* text = nullptr;
    const int status = sd_bus_message_read_basic(message, 's', &text);
    if (status > 0) out = text;
    return status;
  };
}

ValueReader Number(std::uint64_t& out) {
  return [&out](sd_bus_message* message) { return sd_bus_message_read_basic(message, 't', &out); };
}

ValueReader Flag(bool& out) {
  return [&out](sd_bus_message* message) {
    int value = 0;
    const int status = sd_bus_message_read_basic(message, 'b', &value);
    out = value != 0;
    return status;
  };
}

int ReadValue(sd_bus_message* message, const char* contents, const ValueReader& read) {
  int status = sd_bus_message_enter_container(message, SD_BUS_TYPE_VARIANT, contents);
  if (status >= 0) status = read(message);
  if (status >= 0) status = sd_bus_message_exit_container(message);
  return status;
}

// The value of the entry whose key was just read; a key that nobody reads is passed over.
int ReadEntryValue(sd_bus_message* message, const std::string& key, const ValueReaders& readers) {
  for (const auto& [name, reader] : readers) {
    if (name == key) return ReadValue(message, reader.first, reader.second);
  }
  return sd_bus_message_skip(message, "v");
}

int ReadDictionary(sd_bus_message* message, const ValueReaders& readers) {
  int status = sd_bus_message_enter_container(message, SD_BUS_TYPE_ARRAY, "{sv}");
  while (status >= 0) {
    status = sd_bus_message_enter_container(message, SD_BUS_TYPE_DICT_ENTRY, "sv");
    if (status <= 0) break;
    const char* key = nullptr;
    status = sd_bus_message_read_basic(message, SD_BUS_TYPE_STRING, &key);
    if (status >= 0) status = ReadEntryValue(message, key, readers);
    if (status >= 0) status = sd_bus_message_exit_container(message);
  }
  return status < 0 ? status : sd_bus_message_exit_container(message);
}

template <class Item>
int ReadDictionaries(sd_bus_message* message, std::vector<Item>& items,
                     int (*readItem)(sd_bus_message* message, Item& item)) {
  int status = sd_bus_message_enter_container(message, SD_BUS_TYPE_ARRAY, "a{sv}");
  while (status >= 0 && sd_bus_message_at_end(message, 0) == 0) {
    status = readItem(message, items.emplace_back());
  }
  return status < 0 ? status : sd_bus_message_exit_container(message);
}

int ReadGateway(sd_bus_message* message, GatewayInfo& gateway) {
  return ReadDictionary(message, {{"GatewayName", {"s", Text(gateway.name)}},
                                  {"GatewayURL", {"s", Text(gateway.url)}},
                                  {"IsDefault", {"b", Flag(gateway.isDefault)}}});
}

int ReadStore(sd_bus_message* message, StoreInfo& store) {
  const ValueReader gateways = [&store](sd_bus_message* inner) {
    return ReadDictionaries(inner, store.gateways, ReadGateway);
  };
  return ReadDictionary(message, {{"StoreName", {"s", Text(store.name)}},
                                  {"StoreURL", {"s", Text(store.url)}},
                                  {"StoreType", {"t", Number(store.type)}},
                                  {"StoreID", {"s", Text(store.id)}},
                                  {"StoreGateways", {"aa{sv}", gateways}}});
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

}  // namespace

std::optional<AgentClient> AgentClient::Connect(std::string& problem) {
  sd_bus* bus = nullptr;
  if (const int status = sd_bus_open_user(&bus); status < 0) {
    problem = "there is no session bus";
    if (status != -ENOMEDIUM) problem += std::string(" (") + std::strerror(-status) + ")";
    return std::nullopt;
  }
  return AgentClient(BusPtr(bus));
}

void AgentClient::Fail(const std::string& what, int error) {
  problem_ = what + ": " + std::strerror(-error);
}

BusMessagePtr AgentClient::NewCall(const char* method, const std::vector<std::string>& arguments) {
  sd_bus_message* raw = nullptr;
  int status = sd_bus_message_new_method_call(bus_.get(), &raw, kService, kObject, kInterface, method);
  BusMessagePtr call(raw);
  for (auto argument = arguments.begin(); status >= 0 && argument != arguments.end(); ++argument) {
    status = sd_bus_message_append_basic(call.get(), 's', argument->c_str());
  }
  if (status >= 0) return call;
  Fail(std::string("the call of ") + method + " could not be made", status);
  return nullptr;
}

BusMessagePtr AgentClient::Call(const char* method, const std::vector<std::string>& arguments,
                                std::chrono::microseconds timeOut) {
  const BusMessagePtr call = NewCall(method, arguments);
  if (!call) return nullptr;
  BusError error;
  sd_bus_message* reply = nullptr;
  const int status = sd_bus_call(bus_.get(), call.get(), TimeOutValue(timeOut), error.Get(), &reply);
  if (status < 0) problem_ = error.Text(status);
  return BusMessagePtr(reply);
}

std::optional<bool> AgentClient::CallForBoolean(const char* method,
                                                const std::vector<std::string>& arguments) {
  const BusMessagePtr reply = Call(method, arguments, kAnswerTime);
  if (!reply) return std::nullopt;
  int value = 0;
  if (const int status = sd_bus_message_read_basic(reply.get(), 'b', &value); status < 0) {
    Fail("its answer cannot be read", status);
    return std::nullopt;
  }
  return value != 0;
}

std::optional<std::vector<StoreInfo>> AgentClient::AllStores() {
  const BusMessagePtr reply = Call("allStores", {}, kAnswerTime);
  if (!reply) return std::nullopt;
  std::vector<StoreInfo> stores;
  if (const int status = ReadDictionaries(reply.get(), stores, ReadStore); status < 0) {
    Fail("its answer cannot be read", status);
    return std::nullopt;
  }
  return stores;
}

std::optional<StoreInfo> AgentClient::StoreForID(const std::string& id) {
  const BusMessagePtr reply = Call("storeForID", {id}, kAnswerTime);
  if (!reply) return std::nullopt;
  StoreInfo store;
  if (const int status = ReadStore(reply.get(), store); status < 0) {
    Fail("its answer cannot be read", status);
    return std::nullopt;
  }
  return store;
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
  const BusMessagePtr call = NewCall("handleServiceRecordFTA", {absolutePath});
  if (!call) return std::nullopt;

  // Declared before the slots, which refer to it.
  OpeningProgress progress;
  sd_bus_slot* slot = nullptr;
  int status = sd_bus_add_match(bus_.get(), &slot, kStoresUpdated, NoteAnnouncement, &progress);
  const BusSlotPtr match(slot);
  slot = nullptr;
  if (status >= 0) {
    status = sd_bus_call_async(bus_.get(), &slot, call.get(), NoteAnswer, &progress, TimeOutValue(kForever));
  }
  const BusSlotPtr pending(slot);
  while (status >= 0 && !progress.answered) {
    status = sd_bus_process(bus_.get(), nullptr);
    if (status == 0) status = sd_bus_wait(bus_.get(), UINT64_MAX);
  }
  if (status < 0) {
    Fail("the connection to it broke", status);
    return std::nullopt;
  }
  if (!progress.problem.empty()) {
    problem_ = progress.problem;
    return std::nullopt;
  }
  return progress.accepted;
}

bool AgentClient::HandOverDiscoveryDocument(const std::string& document) {
  return Call("handleDiscoveryDocument", {document}, kForever) != nullptr;
}

bool AgentClient::PostNotification(const std::string& name, const std::string& object) {
  int status = sd_bus_emit_signal(bus_.get(), kNotificationsObject, kNotificationsInterface, "Posted", "ss",
                                  name.c_str(), object.c_str());
  if (status >= 0) status = sd_bus_flush(bus_.get());
  if (status < 0) Fail("the notification could not be sent", status);
  return status >= 0;
}

#include "support/BusClient.h"

#include "support/BusConnection.h"

#include <cstdint>

namespace TestSupport {
namespace {

using nlohmann::json;

constexpr char kServiceRecordsName[] = "com.morvane.ServiceRecords";
constexpr char kServiceRecordsPath[] = "/com/morvane/ServiceRecords";
constexpr char kNotifications[] = "com.morvane.DistributedNotifications";
constexpr char kNotificationsPath[] = "/com/morvane/DistributedNotifications";

json ReadValue(sd_bus_message* message);

json ReadItems(sd_bus_message* message) {
  json items = json::array();
  while (sd_bus_message_at_end(message, 0) == 0) items.push_back(ReadValue(message));
  return items;
}

json ReadDictionary(sd_bus_message* message) {
  json dictionary = json::object();
  while (sd_bus_message_enter_container(message, SD_BUS_TYPE_DICT_ENTRY, "sv") > 0) {
    const char* key = nullptr;
    CheckBus(sd_bus_message_read_basic(message, SD_BUS_TYPE_STRING, &key), "dictionary key");
    dictionary[key] = ReadValue(message);
    CheckBus(sd_bus_message_exit_container(message), "dictionary entry");
  }
  return dictionary;
}

json ReadContainer(sd_bus_message* message, char type, const char* contents) {
  CheckBus(sd_bus_message_enter_container(message, type, contents), "container");
  json value;
  if (type == SD_BUS_TYPE_VARIANT) {
    value = ReadValue(message);
  } else if (std::string_view(contents) == "{sv}") {
    value = ReadDictionary(message);
  } else {
    value = ReadItems(message);
  }
  CheckBus(sd_bus_message_exit_container(message), "container");
  return value;
}

template <class Type>
json ReadBasic(sd_bus_message* message, char type) {
  Type value{};
  CheckBus(sd_bus_message_read_basic(message, type, &value), "basic value");
  return value;
}

json ReadValue(sd_bus_message* message) {
  char type = 0;
  const char* contents = nullptr;
  CheckBus(sd_bus_message_peek_type(message, &type, &contents), "peek");
  switch (type) {
    case SD_BUS_TYPE_STRING:
      return ReadBasic<const char*>(message, type);
    case SD_BUS_TYPE_BOOLEAN:
      return ReadBasic<int>(message, type) != 0;
    case SD_BUS_TYPE_UINT32:
      return ReadBasic<std::uint32_t>(message, type);
    case SD_BUS_TYPE_UINT64:
      return ReadBasic<std::uint64_t>(message, type);
    case SD_BUS_TYPE_ARRAY:
    case SD_BUS_TYPE_VARIANT:
      return ReadContainer(message, type, contents);
    default:
      throw std::runtime_error(std::string("unexpected type on the bus: ") + type);
  }
}

int RecordNotification(sd_bus_message* message, void* seen, sd_bus_error* /*error*/) {
  const char* name = nullptr;
  const char* object = nullptr;
  if (sd_bus_message_read(message, "ss", &name, &object) < 0) return 0;
  static_cast<std::vector<std::string>*>(seen)->push_back(std::string(name) + " " + object);
  return 0;
}

json ReadResult(sd_bus_message* reply) {
  json results = ReadItems(reply);
  if (results.size() > 1) return results;
  return results.empty() ? json() : results.front();
}

}  // namespace

BusClient::BusClient(const std::string& address) : bus_(ConnectToBus(address)) {
  CheckBus(sd_bus_match_signal(bus_.get(), nullptr, nullptr, kNotificationsPath, kNotifications, "Posted",
                               RecordNotification, &notifications_),
           "match");
}

Bus::BusMessagePtr BusClient::NewCall(const std::string& name, const std::string& path,
                                      const std::string& interface, const std::string& method,
                                      const std::vector<std::string>& arguments) {
  sd_bus_message* message = nullptr;
  CheckBus(sd_bus_message_new_method_call(bus_.get(), &message, name.c_str(), path.c_str(), interface.c_str(),
                                          method.c_str()),
           method);
  Bus::BusMessagePtr call(message);
  for (const std::string& argument : arguments) {
    CheckBus(sd_bus_message_append_basic(message, SD_BUS_TYPE_STRING, argument.c_str()), method);
  }
  return call;
}

Bus::BusMessagePtr BusClient::Send(const Bus::BusMessagePtr& call) {
  sd_bus_error error{};
  sd_bus_message* reply = nullptr;
  if (sd_bus_call(bus_.get(), call.get(), 60'000'000, &error, &reply) >= 0) return Bus::BusMessagePtr(reply);
  const BusError failure(error.name == nullptr ? "" : error.name,
                         error.message == nullptr ? "" : error.message);
  sd_bus_error_free(&error);
  throw failure;
}

json BusClient::Call(const std::string& name, const std::string& path, const std::string& interface,
                     const std::string& method, const std::vector<std::string>& arguments) {
  const Bus::BusMessagePtr reply = Send(NewCall(name, path, interface, method, arguments));
  return ReadResult(reply.get());
}

json BusClient::ServiceRecords(const std::string& method, const std::vector<std::string>& arguments) {
  return Call(kServiceRecordsName, kServiceRecordsPath, "com.morvane.MrvServiceRecordsService", method,
              arguments);
}

json BusClient::Beacons(const std::string& method, const std::vector<std::string>& arguments) {
  return Call("com.morvane.Beacons", "/com/morvane/Beacons", "com.morvane.MrvBeaconService", method,
              arguments);
}

std::uint64_t BusClient::StartServiceRecords(const std::string& method,
                                             const std::vector<std::string>& arguments) {
  const Bus::BusMessagePtr message = NewCall(kServiceRecordsName, kServiceRecordsPath,
                                             "com.morvane.MrvServiceRecordsService", method, arguments);
  const std::uint64_t number = nextCall_++;
  StartedCall& call = started_.emplace(number, StartedCall{this, number, {}, {}}).first->second;
  CheckBus(sd_bus_call_async(bus_.get(), nullptr, message.get(), RecordReply, &call, UINT64_MAX), method);
  CheckBus(sd_bus_flush(bus_.get()), method);
  return number;
}

int BusClient::RecordReply(sd_bus_message* message, void* call, sd_bus_error* /*error*/) {
  auto& started = *static_cast<StartedCall*>(call);
  const sd_bus_error* failure = sd_bus_message_get_error(message);
  if (failure == nullptr) started.result = ReadResult(message);
  started.error = failure == nullptr ? "" : failure->name;
  started.client->answered_.push_back(started.number);
  return 0;
}

bool BusClient::HasReply(std::uint64_t call) {
  ProcessPending();
  return started_.at(call).error.has_value();
}

json BusClient::WaitForReply(std::uint64_t call) {
  const StartedCall& started = started_.at(call);
  if (!WaitUntil([&] { return started.error.has_value(); })) throw std::runtime_error("no reply in time");
  if (!started.error->empty()) throw BusError(*started.error, "the call failed");
  return started.result;
}

std::vector<std::uint64_t> BusClient::AnsweredCalls() {
  ProcessPending();
  return answered_;
}

void BusClient::OpenFiles(const std::vector<std::string>& uris) {
  const Bus::BusMessagePtr call =
      NewCall(kServiceRecordsName, kServiceRecordsPath, "org.freedesktop.Application", "Open", {});
  CheckBus(sd_bus_message_open_container(call.get(), SD_BUS_TYPE_ARRAY, "s"), "Open");
  for (const std::string& uri : uris) CheckBus(sd_bus_message_append(call.get(), "s", uri.c_str()), "Open");
  CheckBus(sd_bus_message_close_container(call.get()), "Open");
  CheckBus(sd_bus_message_append(call.get(), "a{sv}", 0), "Open");
  Send(call);
}

std::string BusClient::Introspect(const std::string& name, const std::string& path) {
  return Call(name, path, "org.freedesktop.DBus.Introspectable", "Introspect").get<std::string>();
}

bool BusClient::HasOwner(const std::string& name) {
  return Call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "NameHasOwner", {name})
      .get<bool>();
}

void BusClient::OwnName(const std::string& name) {
  CheckBus(sd_bus_request_name(bus_.get(), name.c_str(), 0), "owning " + name);
}

void BusClient::OfferApplication(const std::string& path, int& activations) {
  const auto answer = [](sd_bus_message* message, void* counter, sd_bus_error* /*error*/) {
    if (sd_bus_message_is_method_call(message, "org.freedesktop.Application", "Activate") == 0) return 0;
    ++*static_cast<int*>(counter);
    return sd_bus_reply_method_return(message, nullptr);
  };
  CheckBus(sd_bus_add_object(bus_.get(), nullptr, path.c_str(), answer, &activations), path);
}

void BusClient::PostNotification(const std::string& name, const std::string& object) {
  CheckBus(sd_bus_emit_signal(bus_.get(), kNotificationsPath, kNotifications, "Posted", "ss", name.c_str(),
                              object.c_str()),
           "Posted");
  CheckBus(sd_bus_flush(bus_.get()), "Posted");
}

std::vector<std::string> BusClient::Notifications() {
  ProcessPending();
  return notifications_;
}

void BusClient::ProcessPending() {
  while (sd_bus_process(bus_.get(), nullptr) > 0) {
  }
}

bool BusClient::WaitUntil(const std::function<bool()>& condition, std::chrono::milliseconds limit) {
  const auto deadline = std::chrono::steady_clock::now() + limit;
  for (ProcessPending(); !condition(); ProcessPending()) {
    const auto left = deadline - std::chrono::steady_clock::now();
    if (left.count() <= 0) return false;
    // Files and processes tell the bus nothing, so the condition is looked at again now and then.
    const auto step = std::min<std::chrono::nanoseconds>(left, std::chrono::milliseconds(20));
    sd_bus_wait(bus_.get(), static_cast<std::uint64_t>(
                                std::chrono::duration_cast<std::chrono::microseconds>(step).count()));
  }
  return true;
}

bool BusClient::WaitUntilOwned(const std::string& name, bool owned) {
  return WaitUntil([&] { return HasOwner(name) == owned; });
}

}  // namespace TestSupport

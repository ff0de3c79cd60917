#include "Agent/AgentConnection.h"

#include "Agent/Reading.h"
#include "libs/Bus/ServiceNames.h"
#include "libs/Display/DisplayVariables.h"

#include <memory>
#include <string_view>
#include <utility>

namespace Stores {

using namespace Windows;

namespace {

// The agent may first have to be started.
constexpr int kSoon = 60 * 1000;
constexpr int kAtLast = G_MAXINT;

std::string TextOf(const GError* error) {
  if (error == nullptr) return {};
  const ErrorPtr copy(g_error_copy(error));
  g_dbus_error_strip_remote_error(copy.get());
  return copy->message;
}

// For a reply that holds one value.
template <class Result, class Read>
auto ReadingOne(const AgentConnection::Answer<Result>& answer, Read read) {
  return [answer, read](GVariant* reply, const GError* error) {
    if (reply == nullptr) return answer(std::nullopt, TextOf(error));
    const VariantPtr value(g_variant_get_child_value(reply, 0));
    answer(read(value.get()), {});
  };
}

// For a reply that holds a location and why.
template <class Read>
auto ReadingLocation(const AgentConnection::Answer<Location>& answer, Read readReason) {
  return [answer, readReason](GVariant* reply, const GError* error) {
    if (reply == nullptr) return answer(std::nullopt, TextOf(error));
    const VariantPtr number(g_variant_get_child_value(reply, 0));
    const VariantPtr reason(g_variant_get_child_value(reply, 1));
    answer(Location{g_variant_get_uint64(number.get()), readReason(reason.get())}, {});
  };
}

Wording::Message ReadLine(GVariant* line) {
  return g_variant_get_string(line, nullptr);
}

bool ReadBool(GVariant* value) {
  return g_variant_get_boolean(value) != FALSE;
}

SavedState ReadState(GVariant* property) {
  const VariantPtr value(g_variant_get_variant(property));
  const bool isWord = g_variant_is_of_type(value.get(), G_VARIANT_TYPE_STRING) != FALSE;
  return isWord ? Reading::StateOf(g_variant_get_string(value.get(), nullptr)) : SavedState::Good;
}

// That whoever has to be asked is asked on the desktop that this window is on.
GVariant* OnThisDesktop() {
  GVariantBuilder desktop;
  g_variant_builder_init(&desktop, G_VARIANT_TYPE("a{ss}"));
  for (const auto& [name, value] : Display::ByName(Display::OfThisProcess())) {
    g_variant_builder_add(&desktop, "{ss}", name.c_str(), value.c_str());
  }
  GVariantBuilder options;
  g_variant_builder_init(&options, G_VARIANT_TYPE_VARDICT);
  g_variant_builder_add(&options, "{sv}", "desktop", g_variant_builder_end(&desktop));
  return g_variant_builder_end(&options);
}

}  // namespace

const AgentConnection::Service AgentConnection::kStores{Bus::ServiceNames::kServiceRecords,
                                                        Bus::ServiceNames::kServiceRecordsPath,
                                                        Bus::ServiceNames::kServiceRecordsInterface};
const AgentConnection::Service AgentConnection::kBeacons{
    Bus::ServiceNames::kBeacons, Bus::ServiceNames::kBeaconsPath, Bus::ServiceNames::kBeaconsInterface};
const AgentConnection::Service AgentConnection::kOpenings{Bus::ServiceNames::kServiceRecords,
                                                          Bus::ServiceNames::kOpeningsPath,
                                                          Bus::ServiceNames::kOpeningsInterface};
const AgentConnection::Service AgentConnection::kProperties{Bus::ServiceNames::kServiceRecords,
                                                            Bus::ServiceNames::kServiceRecordsPath,
                                                            "org.freedesktop.DBus.Properties"};

AgentConnection::AgentConnection(GDBusConnection* bus, Observer observer)
    : bus_(Shared(bus)), observer_(std::move(observer)) {
  Subscribe();
  ownerWatch_ =
      g_bus_watch_name_on_connection(bus, Bus::ServiceNames::kServiceRecords, G_BUS_NAME_WATCHER_FLAGS_NONE,
                                     &NoteOwner, &NoteNoOwner, this, nullptr);
}

AgentConnection::~AgentConnection() {
  g_cancellable_cancel(gone_.get());
  g_bus_unwatch_name(ownerWatch_);
}

void AgentConnection::Subscribe() {
  subscriptions_.emplace_back(bus_.get(),
                              SignalRule{.interface = Bus::ServiceNames::kNotificationsInterface,
                                         .member = "Posted",
                                         .path = Bus::ServiceNames::kNotificationsPath},
                              "(ss)", [this](GVariant* parameters) { NoteNotification(parameters); });
  const auto ofOpenings = [](const char* member) {
    return SignalRule{.sender = Bus::ServiceNames::kServiceRecords,
                      .interface = Bus::ServiceNames::kOpeningsInterface,
                      .member = member,
                      .path = Bus::ServiceNames::kOpeningsPath};
  };
  subscriptions_.emplace_back(bus_.get(), ofOpenings(Bus::ServiceNames::kStoresChangedSignal), "(aa{sv})",
                              [this](GVariant* /*parameters*/) { observer_.storesChanged(); });
  subscriptions_.emplace_back(
      bus_.get(), ofOpenings(Bus::ServiceNames::kFinishedSignal), "(tsaa{sv})",
      [this](GVariant* parameters) { observer_.openingFinished(Reading::FinishedOpening(parameters)); });
}

void AgentConnection::NoteOwner(GDBusConnection* /*bus*/, const char* /*name*/, const char* /*owner*/,
                                gpointer self) {
  static_cast<AgentConnection*>(self)->observer_.agentCame();
}

void AgentConnection::NoteNoOwner(GDBusConnection* /*bus*/, const char* /*name*/, gpointer self) {
  static_cast<AgentConnection*>(self)->observer_.agentWent();
}

void AgentConnection::NoteNotification(GVariant* parameters) {
  const char* name = nullptr;
  const char* object = nullptr;
  g_variant_get(parameters, "(&s&s)", &name, &object);
  const std::string_view notification = name;
  if (notification == Bus::ServiceNames::kStoresUpdatedNotification) {
    observer_.storesChanged();
  } else if (notification == Bus::ServiceNames::kLocationChangedNotification) {
    observer_.locationChanged(object);
  } else if (notification == Bus::ServiceNames::kLoggingNotification) {
    observer_.loggingChanged();
  }
}

void AgentConnection::TakeReply(GObject* bus, GAsyncResult* result, gpointer handler) {
  const std::unique_ptr<ReplyHandler> owner(static_cast<ReplyHandler*>(handler));
  ErrorPtr error;
  const VariantPtr reply(g_dbus_connection_call_finish(G_DBUS_CONNECTION(bus), result, Out(error)));
  if (error && g_error_matches(error.get(), G_IO_ERROR, G_IO_ERROR_CANCELLED)) return;
  (*owner)(reply.get(), error.get());
}

void AgentConnection::Call(const Service& service, const char* method, GVariant* arguments,
                           const char* replyType, int timeOutMilliseconds, ReplyHandler handler) {
  g_dbus_connection_call(bus_.get(), service.name, service.path, service.interface, method, arguments,
                         G_VARIANT_TYPE(replyType), G_DBUS_CALL_FLAGS_NONE, timeOutMilliseconds, gone_.get(),
                         &TakeReply, std::make_unique<ReplyHandler>(std::move(handler)).release());
}

void AgentConnection::AllStores(const Answer<std::vector<Store>>& answer) {
  Call(kStores, "allStores", nullptr, "(aa{sv})", kSoon,
       ReadingOne(answer, [](GVariant* value) { return Reading::Stores(value); }));
}

void AgentConnection::StateOfSavedStores(const Answer<SavedState>& answer) {
  Call(kProperties, "Get", g_variant_new("(ss)", kStores.interface, "stateOfSavedStores"), "(v)", kSoon,
       ReadingOne(answer, ReadState));
}

void AgentConnection::LocationForStore(const std::string& url, const Answer<Location>& answer) {
  Call(kBeacons, "describeLocationForStore", g_variant_new("(s)", url.c_str()), "(ta{sv})", kSoon,
       [this, url, answer](GVariant* reply, const GError* error) {
         const bool isUnknown = g_error_matches(error, G_DBUS_ERROR, G_DBUS_ERROR_UNKNOWN_METHOD) != FALSE;
         if (isUnknown) return LocationForStoreInEnglish(url, answer);
         ReadingLocation(answer, Reading::MessageFrom)(reply, error);
       });
}

void AgentConnection::LocationForStoreInEnglish(const std::string& url, const Answer<Location>& answer) {
  Call(kBeacons, "explainLocationForStore", g_variant_new("(s)", url.c_str()), "(ts)", kSoon,
       ReadingLocation(answer, ReadLine));
}

void AgentConnection::DeleteStore(const std::string& id, const Answer<bool>& answer) {
  Call(kStores, "deleteStore", g_variant_new("(s)", id.c_str()), "(b)", kAtLast,
       ReadingOne(answer, ReadBool));
}

void AgentConnection::SetDefaultGateway(const std::string& id, const std::string& gateway,
                                        const Answer<bool>& answer) {
  Call(kStores, "setDefaultGatewayForStoreIDTo", g_variant_new("(ss)", id.c_str(), gateway.c_str()), "(b)",
       kAtLast, ReadingOne(answer, ReadBool));
}

void AgentConnection::OpenFile(const std::string& absolutePath, const Answer<std::uint64_t>& answer) {
  Call(kOpenings, "Open", g_variant_new("(s@a{sv})", absolutePath.c_str(), OnThisDesktop()), "(t)", kSoon,
       ReadingOne(answer, [](GVariant* value) { return std::uint64_t{g_variant_get_uint64(value)}; }));
}

void AgentConnection::AnnounceLogging() {
  g_dbus_connection_emit_signal(bus_.get(), nullptr, Bus::ServiceNames::kNotificationsPath,
                                Bus::ServiceNames::kNotificationsInterface, "Posted",
                                g_variant_new("(ss)", Bus::ServiceNames::kLoggingNotification, ""), nullptr);
}

}  // namespace Stores

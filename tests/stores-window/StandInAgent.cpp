#include "stores-window/StandInAgent.h"

#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string_view>

namespace Stores {

using namespace Windows;

namespace {

constexpr char kOpeningsPath[] = "/com/morvane/ServiceRecords/Openings";
constexpr char kOpenings[] = "com.morvane.ServiceRecords.Openings";
constexpr const char* kNames[]{"com.morvane.Beacons", "com.morvane.ServiceRecords"};

using NodePtr = Lifetime::UniqueHandle<GDBusNodeInfo, g_dbus_node_info_unref>;

NodePtr Description(const std::string& source, const std::string& interface) {
  std::ifstream file(source + "/packaging/dbus/interfaces/" + interface + ".xml");
  const std::string text{std::istreambuf_iterator<char>(file), {}};
  NodePtr node(g_dbus_node_info_new_for_xml(text.c_str(), nullptr));
  if (!node) throw std::runtime_error("the description of the interface cannot be read");
  return node;
}

VariantPtr Dictionaries(const std::string& text) {
  VariantPtr dictionaries(g_variant_parse(G_VARIANT_TYPE("aa{sv}"), text.c_str(), nullptr, nullptr, nullptr));
  if (!dictionaries) throw std::runtime_error("no dictionaries: " + text);
  return dictionaries;
}

void CallBus(GDBusConnection* bus, const char* method, GVariant* arguments) {
  const VariantPtr reply(g_dbus_connection_call_sync(bus, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                                                     "org.freedesktop.DBus", method, arguments, nullptr,
                                                     G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr));
  if (!reply) throw std::runtime_error(std::string("the bus refuses ") + method);
}

std::string DisplayIn(GVariant* options) {
  const VariantPtr desktop(g_variant_lookup_value(options, "desktop", G_VARIANT_TYPE("a{ss}")));
  const char* display = nullptr;
  if (desktop) g_variant_lookup(desktop.get(), "DISPLAY", "&s", &display);
  return display != nullptr ? display : "";
}

}  // namespace

StandInAgent::StandInAgent(const std::string& busAddress, const std::string& source)
    : bus_(g_dbus_connection_new_for_address_sync(
          busAddress.c_str(),
          static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                            G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
          nullptr, nullptr, nullptr)) {
  Offer(source, kOpeningsPath, kOpenings);
  Offer(source, "/com/morvane/ServiceRecords", "com.morvane.MrvServiceRecordsService");
  Offer(source, "/com/morvane/Beacons", "com.morvane.MrvBeaconService");
  TakeTheNames();
}

StandInAgent::~StandInAgent() {
  for (GDBusMethodInvocation* question : questions_) {
    if (question != nullptr) g_object_unref(question);
  }
  g_dbus_connection_close_sync(bus_.get(), nullptr, nullptr);
}

void StandInAgent::Offer(const std::string& source, const char* path, const char* interface) {
  static constexpr GDBusInterfaceVTable kHandlers{&Take, &State, nullptr, {}};
  const NodePtr node = Description(source, interface);
  g_dbus_connection_register_object(bus_.get(), path,
                                    g_dbus_node_info_lookup_interface(node.get(), interface), &kHandlers,
                                    this, nullptr, nullptr);
}

void StandInAgent::TakeTheNames() {
  for (const char* name : kNames) CallBus(bus_.get(), "RequestName", g_variant_new("(su)", name, 0U));
}

void StandInAgent::GiveUpTheNames() {
  for (const char* name : kNames) CallBus(bus_.get(), "ReleaseName", g_variant_new("(s)", name));
}

void StandInAgent::Take(GDBusConnection* /*bus*/, const char* sender, const char* /*path*/,
                        const char* /*interface*/, const char* method, GVariant* parameters,
                        GDBusMethodInvocation* call, gpointer self) {
  auto* const agent = static_cast<StandInAgent*>(self);
  const std::string_view asked = method;
  if (asked == "Open") {
    agent->TakeOpening(sender, parameters, call);
  } else if (asked == "allStores") {
    agent->questions_.push_back(call);
  } else if (asked == "describeLocationForStore" && agent->isOfBeforeAnUpdate) {
    g_dbus_method_invocation_return_dbus_error(call, "org.freedesktop.DBus.Error.UnknownMethod", method);
  } else if (asked == "explainLocationForStore") {
    g_dbus_method_invocation_return_value(call, g_variant_new_parsed("(uint64 1, 'LAN, as it was said')"));
  } else if (asked == "describeLocationForStore") {
    ++agent->locations_;
    g_dbus_method_invocation_return_value(call, g_variant_new_parsed("(uint64 1, {'Text': <'LAN'>})"));
  } else {
    g_dbus_method_invocation_return_dbus_error(call, "com.morvane.NotStoodInFor", method);
  }
}

GVariant* StandInAgent::State(GDBusConnection* /*bus*/, const char* /*sender*/, const char* /*path*/,
                              const char* /*interface*/, const char* /*property*/, GError** /*error*/,
                              gpointer /*self*/) {
  return g_variant_new_string("good");
}

void StandInAgent::TakeOpening(const char* sender, GVariant* parameters, GDBusMethodInvocation* call) {
  const char* path = nullptr;
  GVariant* options = nullptr;
  g_variant_get(parameters, "(&s@a{sv})", &path, &options);
  const VariantPtr owned(options);
  opened_.emplace_back(path);
  display_ = DisplayIn(options);
  caller_ = sender;
  g_dbus_method_invocation_return_value(call, g_variant_new("(t)", std::uint64_t{opened_.size()}));
}

void StandInAgent::Finish(std::uint64_t opening, const std::string& outcome, const std::string& stores) {
  Emit(caller_.c_str(), "Finished",
       g_variant_new("(ts@aa{sv})", opening, outcome.c_str(), Dictionaries(stores).get()));
}

void StandInAgent::TellStores(std::size_t question, const std::string& stores) {
  g_dbus_method_invocation_return_value(questions_.at(question),
                                        g_variant_new("(@aa{sv})", Dictionaries(stores).get()));
  questions_[question] = nullptr;
}

void StandInAgent::AnnounceChange() {
  Emit(nullptr, "StoresChanged", g_variant_new("(aa{sv})", nullptr));
}

void StandInAgent::Emit(const char* receiver, const char* signal, GVariant* parameters) {
  if (!g_dbus_connection_emit_signal(bus_.get(), receiver, kOpeningsPath, kOpenings, signal, parameters,
                                     nullptr)) {
    throw std::runtime_error(std::string("the bus refuses ") + signal);
  }
}

}  // namespace Stores

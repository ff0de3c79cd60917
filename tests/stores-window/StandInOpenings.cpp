#include "stores-window/StandInOpenings.h"

#include <fstream>
#include <iterator>
#include <stdexcept>

namespace Stores {

namespace {

constexpr char kName[] = "com.morvane.ServiceRecords";
constexpr char kPath[] = "/com/morvane/ServiceRecords/Openings";
constexpr char kInterface[] = "com.morvane.ServiceRecords.Openings";

using NodePtr = Lifetime::UniqueHandle<GDBusNodeInfo, g_dbus_node_info_unref>;

NodePtr Description(const std::string& source) {
  std::ifstream file(source + "/packaging/dbus/interfaces/com.morvane.ServiceRecords.Openings.xml");
  const std::string text{std::istreambuf_iterator<char>(file), {}};
  NodePtr node(g_dbus_node_info_new_for_xml(text.c_str(), nullptr));
  if (!node) throw std::runtime_error("the description of the interface cannot be read");
  return node;
}

void CallBus(GDBusConnection* bus, const char* method, GVariant* arguments) {
  const VariantPtr reply(g_dbus_connection_call_sync(bus, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                                                     "org.freedesktop.DBus", method, arguments, nullptr,
                                                     G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr));
  if (!reply) throw std::runtime_error(std::string("the bus refuses ") + method);
}

}  // namespace

StandInOpenings::StandInOpenings(const std::string& busAddress, const std::string& source)
    : bus_(g_dbus_connection_new_for_address_sync(
          busAddress.c_str(),
          static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                            G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
          nullptr, nullptr, nullptr)) {
  static constexpr GDBusInterfaceVTable kMethods{&Take, nullptr, nullptr, {}};
  const NodePtr node = Description(source);
  g_dbus_connection_register_object(bus_.get(), kPath,
                                    g_dbus_node_info_lookup_interface(node.get(), kInterface), &kMethods,
                                    this, nullptr, nullptr);
  CallBus(bus_.get(), "RequestName", g_variant_new("(su)", kName, 0U));
}

StandInOpenings::~StandInOpenings() {
  g_dbus_connection_close_sync(bus_.get(), nullptr, nullptr);
}

void StandInOpenings::GiveUpTheName() {
  CallBus(bus_.get(), "ReleaseName", g_variant_new("(s)", kName));
}

void StandInOpenings::Take(GDBusConnection* /*bus*/, const char* sender, const char* /*path*/,
                           const char* /*interface*/, const char* /*method*/, GVariant* parameters,
                           GDBusMethodInvocation* call, gpointer self) {
  auto* const openings = static_cast<StandInOpenings*>(self);
  const char* path = nullptr;
  g_variant_get(parameters, "(&sa{sv})", &path, nullptr);
  openings->opened_.emplace_back(path);
  openings->caller_ = sender;
  g_dbus_method_invocation_return_value(call, g_variant_new("(t)", std::uint64_t{openings->opened_.size()}));
}

void StandInOpenings::Finish(std::uint64_t opening, const std::string& outcome, const std::string& stores) {
  const VariantPtr dictionaries(
      g_variant_parse(G_VARIANT_TYPE("aa{sv}"), stores.c_str(), nullptr, nullptr, nullptr));
  if (!dictionaries) throw std::runtime_error("no dictionaries: " + stores);
  GVariant* const parameters = g_variant_new("(ts@aa{sv})", opening, outcome.c_str(), dictionaries.get());
  if (!g_dbus_connection_emit_signal(bus_.get(), caller_.c_str(), kPath, kInterface, "Finished", parameters,
                                     nullptr)) {
    throw std::runtime_error("the signal cannot be sent");
  }
}

}  // namespace Stores

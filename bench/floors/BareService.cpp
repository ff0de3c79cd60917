// A service that answers allStores with dictionaries that it has ready, and does nothing else:
// bare_service NAME STORES
#include "SdBus.h"
#include "common/GeneratedStores.h"

#include <cstdlib>

namespace {

using testsupport::GatewayText;
using testsupport::StoreText;

using Stores = std::vector<StoreText>;

void AppendText(sd_bus_message* reply, const char* key, const std::string& text) {
  sd_bus_message_append(reply, "{sv}", key, "s", text.c_str());
}

void AppendGateways(sd_bus_message* reply, const std::vector<GatewayText>& gateways) {
  sd_bus_message_open_container(reply, 'e', "sv");
  sd_bus_message_append_basic(reply, 's', "StoreGateways");
  sd_bus_message_open_container(reply, 'v', "aa{sv}");
  sd_bus_message_open_container(reply, 'a', "a{sv}");
  for (const GatewayText& gateway : gateways) {
    sd_bus_message_append(reply, "a{sv}", 3, "GatewayName", "s", gateway.name.c_str(), "GatewayURL", "s",
                          gateway.location.c_str(), "IsDefault", "b", static_cast<int>(gateway.isDefault));
  }
  sd_bus_message_close_container(reply);
  sd_bus_message_close_container(reply);
  sd_bus_message_close_container(reply);
}

void AppendStore(sd_bus_message* reply, const StoreText& store) {
  sd_bus_message_open_container(reply, 'a', "{sv}");
  AppendText(reply, "StoreName", store.name);
  AppendText(reply, "StoreURL", store.url);
  sd_bus_message_append(reply, "{sv}", "StoreType", "t", std::uint64_t{0});
  AppendText(reply, "StoreID", store.id);
  AppendGateways(reply, store.gateways);
  sd_bus_message_close_container(reply);
}

int AllStores(sd_bus_message* call, void* stores, sd_bus_error* /*error*/) {
  sd_bus_message* message = nullptr;
  if (const int result = sd_bus_message_new_method_return(call, &message); result < 0) return result;
  const BusMessagePtr reply(message);
  sd_bus_message_open_container(message, 'a', "a{sv}");
  for (const StoreText& store : *static_cast<const Stores*>(stores)) AppendStore(message, store);
  const int result = sd_bus_message_close_container(message);
  return result < 0 ? result : sd_bus_send(nullptr, message, nullptr);
}

const sd_bus_vtable kMethods[] = {
    SD_BUS_VTABLE_START(0), SD_BUS_METHOD("allStores", "", "aa{sv}", AllStores, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_VTABLE_END};

}  // namespace

int main(int argc, char** argv) {
  sd_bus* bus = nullptr;
  sd_event* loop = nullptr;
  if (argc != 3 || sd_bus_open_user(&bus) < 0 || sd_event_default(&loop) < 0) return EXIT_FAILURE;
  const EventLoopPtr ownedLoop(loop);
  const BusPtr ownedBus(bus);
  Stores stores = bench::StoresAsText(std::strtoul(argv[2], nullptr, 10));
  sd_bus_add_object_vtable(bus, nullptr, "/com/morvane/ServiceRecords",
                           "com.morvane.MrvServiceRecordsService", kMethods, &stores);
  if (sd_bus_request_name(bus, argv[1], 0) < 0) return EXIT_FAILURE;
  if (sd_bus_attach_event(bus, loop, SD_EVENT_PRIORITY_NORMAL) < 0) return EXIT_FAILURE;
  return sd_event_loop(loop) < 0 ? EXIT_FAILURE : EXIT_SUCCESS;
}

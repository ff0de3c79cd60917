// A service that answers allStores with dictionaries that it has ready, and does nothing else:
// bare_service NAME STORES
#include "common/GeneratedStores.h"
#include "libs/Bus/SdBus.h"

#include <cstdlib>

namespace {

using TestSupport::GatewayText;
using TestSupport::StoreText;

using Stores = std::vector<StoreText>;

// The whole-type functions of the library spell each type out first, which takes longer.
void AppendEntry(sd_bus_message* reply, const char* key, const char* type, const void* value) {
  sd_bus_message_open_container(reply, 'e', "sv");
  sd_bus_message_append_basic(reply, 's', key);
  sd_bus_message_open_container(reply, 'v', type);
  sd_bus_message_append_basic(reply, *type, value);
  sd_bus_message_close_container(reply);
  sd_bus_message_close_container(reply);
}

void AppendGateway(sd_bus_message* reply, const GatewayText& gateway) {
  const int isDefault = static_cast<int>(gateway.isDefault);
  sd_bus_message_open_container(reply, 'a', "{sv}");
  AppendEntry(reply, "GatewayName", "s", gateway.name.c_str());
  AppendEntry(reply, "GatewayURL", "s", gateway.location.c_str());
  AppendEntry(reply, "IsDefault", "b", &isDefault);
  sd_bus_message_close_container(reply);
}

void AppendGateways(sd_bus_message* reply, const std::vector<GatewayText>& gateways) {
  sd_bus_message_open_container(reply, 'e', "sv");
  sd_bus_message_append_basic(reply, 's', "StoreGateways");
  sd_bus_message_open_container(reply, 'v', "aa{sv}");
  sd_bus_message_open_container(reply, 'a', "a{sv}");
  for (const GatewayText& gateway : gateways) AppendGateway(reply, gateway);
  sd_bus_message_close_container(reply);
  sd_bus_message_close_container(reply);
  sd_bus_message_close_container(reply);
}

void AppendStore(sd_bus_message* reply, const StoreText& store) {
  constexpr std::uint64_t kStoreType = 0;
  sd_bus_message_open_container(reply, 'a', "{sv}");
  AppendEntry(reply, "StoreName", "s", store.name.c_str());
  AppendEntry(reply, "StoreURL", "s", store.url.c_str());
  AppendEntry(reply, "StoreType", "t", &kStoreType);
  AppendEntry(reply, "StoreID", "s", store.id.c_str());
  AppendGateways(reply, store.gateways);
  sd_bus_message_close_container(reply);
}

int AllStores(sd_bus_message* call, void* stores, sd_bus_error* /*error*/) {
  sd_bus_message* message = nullptr;
  if (const int result = sd_bus_message_new_method_return(call, &message); result < 0) return result;
  const Bus::BusMessagePtr reply(message);
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
  const Bus::EventLoopPtr ownedLoop(loop);
  const Bus::BusPtr ownedBus(bus);
  Stores stores = Bench::StoresAsText(std::strtoul(argv[2], nullptr, 10));
  sd_bus_add_object_vtable(bus, nullptr, "/com/morvane/ServiceRecords",
                           "com.morvane.MrvServiceRecordsService", kMethods, &stores);
  if (sd_bus_request_name(bus, argv[1], 0) < 0) return EXIT_FAILURE;
  if (sd_bus_attach_event(bus, loop, SD_EVENT_PRIORITY_NORMAL) < 0) return EXIT_FAILURE;
  return sd_event_loop(loop) < 0 ? EXIT_FAILURE : EXIT_SUCCESS;
}

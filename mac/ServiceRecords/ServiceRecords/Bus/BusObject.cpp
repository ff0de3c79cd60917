#include "Bus/BusObject.h"

#include <cstdint>
#include <system_error>

std::string ReadText(sd_bus_message* call) {
  const char* text = nullptr;
  const int result = sd_bus_message_read_basic(call, SD_BUS_TYPE_STRING, &text);
  if (result < 0) throw std::system_error(-result, std::generic_category(), "reading a bus message");
  return text;
}

BusMessagePtr NewReply(sd_bus_message* call) {
  sd_bus_message* reply = nullptr;
  const int result = sd_bus_message_new_method_return(call, &reply);
  if (result < 0) throw std::system_error(-result, std::generic_category(), "making a reply");
  return BusMessagePtr(reply);
}

BusSlotPtr AddInterface(sd_bus& bus, const char* path, const char* interface, const sd_bus_vtable* table,
                        void* object) {
  sd_bus_slot* slot = nullptr;
  return sd_bus_add_object_vtable(&bus, &slot, path, interface, table, object) < 0 ? nullptr
                                                                                   : BusSlotPtr(slot);
}

bool NameHasOwner(sd_bus& bus, const char* name) {
  sd_bus_message* message = nullptr;
  int owned = 0;
  const int result = sd_bus_call_method(&bus, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                                        "org.freedesktop.DBus", "NameHasOwner", nullptr, &message, "s", name);
  const BusMessagePtr reply(message);
  return result >= 0 && sd_bus_message_read(message, "b", &owned) >= 0 && owned != 0;
}

void ProcessArrived(sd_bus& bus) {
  // The answer comes behind them and leaves them in the queue; while there is one, nothing else is read.
  static_cast<void>(NameHasOwner(bus, "org.freedesktop.DBus"));
  std::uint64_t queued = 0;
  while (sd_bus_get_n_queued_read(&bus, &queued) >= 0 && queued > 0 && sd_bus_process(&bus, nullptr) > 0) {
  }
}

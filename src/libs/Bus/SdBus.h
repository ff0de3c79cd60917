#pragma once

#include <systemd/sd-bus.h>
#include <systemd/sd-event.h>

#include <memory>

// Owners for the bus library's handles. A handle and everything made from it is used by one thread only.
struct BusDeleter {
  void operator()(sd_bus* bus) const { sd_bus_flush_close_unref(bus); }
};
struct BusMessageDeleter {
  void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
};
struct BusSlotDeleter {
  void operator()(sd_bus_slot* slot) const { sd_bus_slot_unref(slot); }
};
struct EventLoopDeleter {
  void operator()(sd_event* loop) const { sd_event_unref(loop); }
};
struct EventSourceDeleter {
  void operator()(sd_event_source* source) const { sd_event_source_disable_unref(source); }
};

using BusPtr = std::unique_ptr<sd_bus, BusDeleter>;
using BusMessagePtr = std::unique_ptr<sd_bus_message, BusMessageDeleter>;
using BusSlotPtr = std::unique_ptr<sd_bus_slot, BusSlotDeleter>;
using EventLoopPtr = std::unique_ptr<sd_event, EventLoopDeleter>;
using EventSourcePtr = std::unique_ptr<sd_event_source, EventSourceDeleter>;

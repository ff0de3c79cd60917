#pragma once

#include "libs/Lifetime/UniqueHandle.h"

#include <systemd/sd-bus.h>
#include <systemd/sd-event.h>

namespace Bus {

// Owners for the bus library's handles. A handle and everything made from it is used by one thread only.
using BusPtr = Lifetime::UniqueHandle<sd_bus, sd_bus_flush_close_unref>;
using BusMessagePtr = Lifetime::UniqueHandle<sd_bus_message, sd_bus_message_unref>;
using BusSlotPtr = Lifetime::UniqueHandle<sd_bus_slot, sd_bus_slot_unref>;
using BusTrackPtr = Lifetime::UniqueHandle<sd_bus_track, sd_bus_track_unref>;
using EventLoopPtr = Lifetime::UniqueHandle<sd_event, sd_event_unref>;
using EventSourcePtr = Lifetime::UniqueHandle<sd_event_source, sd_event_source_disable_unref>;

}  // namespace Bus

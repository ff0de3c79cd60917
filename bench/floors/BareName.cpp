// A program that connects to the session bus, takes a name and waits, with the agent's libraries loaded:
// bare_name NAME
#include "libs/Bus/SdBus.h"

#include <cstdlib>

int main(int argc, char** argv) {
  sd_bus* bus = nullptr;
  sd_event* loop = nullptr;
  if (argc != 2 || sd_bus_open_user(&bus) < 0 || sd_event_default(&loop) < 0) return EXIT_FAILURE;
  const Bus::EventLoopPtr ownedLoop(loop);
  const Bus::BusPtr ownedBus(bus);
  if (sd_bus_request_name(bus, argv[1], 0) < 0) return EXIT_FAILURE;
  if (sd_bus_attach_event(bus, loop, SD_EVENT_PRIORITY_NORMAL) < 0) return EXIT_FAILURE;
  return sd_event_loop(loop) < 0 ? EXIT_FAILURE : EXIT_SUCCESS;
}

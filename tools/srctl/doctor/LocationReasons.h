#pragma once

#include <chrono>
#include <map>
#include <string>

// Why the network-location library decides as it does, by store URL (UTF-8): it is run in this process, over
// the stores of the user's configuration, and asks their beacons. A store that is not decided within the time
// has no reason. Once in a process; the main thread.
[[nodiscard]] std::map<std::string, std::string> LocationReasons(std::chrono::seconds limit);

#pragma once

#include <string>

// The system log, for problems that the trace log may not show: services, plug-in, message resources, a list
// that cannot be read or saved. Where the machine has no system log, the lines go to standard error. Any
// thread. The platform defines it.
namespace SystemLog {

// Writes one line at error priority.
void Error(const std::string& line);

}  // namespace SystemLog

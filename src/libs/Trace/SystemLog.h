#pragma once

#include <string>

// The system log, for problems that the trace log may not show: services, plug-in, message resources, a list
// that cannot be read or saved. The lines go to standard error too, unless that is the system log itself. Any
// thread. The platform defines it.
namespace SystemLog {

// Writes one line at error priority.
void Error(const std::string& line);

}  // namespace SystemLog

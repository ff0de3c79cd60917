#pragma once

#include <string>

// The system log, for problems that the trace log may not show: services, plug-in, message resources, a list
// that cannot be read or saved. The lines go to standard error too, unless that is the system log itself. Any
// thread.
namespace trace::SystemLog {

// Writes one line at error priority.
void Error(const std::string& line);

// Where the lines go while it is not the system log itself. Any thread calls it.
class Log {
 public:
  virtual ~Log() = default;
  virtual void Write(const std::string& line) = 0;
};

// From now on the lines go there; null: to the system log. Returns where they went before.
Log* LeadTo(Log* log);

}  // namespace trace::SystemLog

#pragma once

#include "libs/Trace/Trace.h"

#include <array>
#include <concepts>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <variant>

// The platform's side of the trace log: where the stream leads, and the printf-style front of the agent.
namespace trace {

// Opens the named log in the user's log folder; the log that was there is kept with "BUP" appended to its
// name.
void InitLog(const std::string& fileName);

}  // namespace trace

namespace Agent {

// One argument of a CSRLog format: text, which it borrows, or a whole number.
class LogArgument {
 public:
  LogArgument(const char* text) : value_(std::string_view(text != nullptr ? text : "(null)")) {}
  LogArgument(const std::string& text) : value_(std::string_view(text)) {}
  LogArgument(std::integral auto number) : value_(static_cast<long long>(number)) {}

  [[nodiscard]] const std::variant<std::string_view, long long>& Get() const { return value_; }

 private:
  std::variant<std::string_view, long long> value_;
};

}  // namespace Agent

// Writes one record with the fixed location of the agent's main module. The format is printf's, with %@ for
// an object's description; characters outside ASCII are written as question marks.
void CSRLogv(std::uint32_t level, std::string_view format, std::span<const Agent::LogArgument> arguments);

template <class... Arguments>
void CSRLog(std::uint32_t level, std::string_view format, const Arguments&... arguments) {
  const std::array<Agent::LogArgument, sizeof...(arguments)> packed{Agent::LogArgument(arguments)...};
  CSRLogv(level, format, packed);
}

// Applies the user default LogLevel: opens the log the first time it is not 0, switches it off and on later.
void ServiceRecordUpdateLoggingFromPrefs();

// Takes one ready-made message of the location library into the trace.
void ServiceRecordWFLogFunc(const char* message);

#include "DbgTrace.h"

#include "Files/LogFileBuffer.h"
#include "libs/Files/Bundle.h"
#include "libs/Files/StandardDirectories.h"
#include "libs/Files/UserDefaults.h"
#include "libs/Lifetime/NoDestructor.h"
#include "libs/Text/TextHelpers.h"
#include "libs/ThreadSafety/ThreadSafety.h"

#include <fmt/args.h>
#include <fmt/printf.h>

#include <cstdlib>
#include <iostream>

namespace trace {
namespace {

constexpr std::uint64_t kMaximumLogBytes = std::uint64_t{64} << 20;

// Like the stream, they outlive every static object that may trace on its way out.
Lifetime::NoDestructor<Agent::LogFileBuffer> g_wBuff;
Lifetime::NoDestructor<std::string> g_logPath SR_GUARDED_BY(wdbgMutex);
bool g_logWasOpened SR_GUARDED_BY(wdbgMutex) = false;

// Standard error is the console of a program without a window. A channel that cannot be opened drops what is
// written to it.
Agent::LogFileBuffer& ConsoleChannel() {
  struct Channel : Agent::LogFileBuffer {
    Channel() { OpenStandardError(); }
  };
  static Lifetime::NoDestructor<Channel> channel;
  return *channel;
}

void WriteBanner() {
  wdbg << std::endl;
  wdbg << std::string_view(" === Morvane Quillon logging started " + GetCurrentTime() + " ===") << std::endl;
  wdbg << std::endl;
}

class LogFile : public Log {
 public:
  std::wstreambuf& File() override { return *g_wBuff; }
  std::wstreambuf& Console() override { return ConsoleChannel(); }
  void KeepBounded() override SR_REQUIRES(wdbgMutex) {
    if (wdbg.rdbuf() != &*g_wBuff || g_wBuff->Size() < kMaximumLogBytes) return;
    g_wBuff->BeginAnew(*g_logPath);
    WriteBanner();
  }
};

// Without a home the path starts at the root.
std::string LogFolder() {
  const char* home = std::getenv("HOME");
  return std::string(home != nullptr ? home : "") + "/Library/Logs/";
}

}  // namespace

void InitLog(const std::string& fileName) {
  static Lifetime::NoDestructor<LogFile> log;
  const ThreadSafety::MutexLock lock(wdbgMutex);
  if (!NoTraceOption && !ConsoleOption) {
    static_cast<void>(Files::StandardDirectories::CreateDirectories(LogFolder()));
    *g_logPath = LogFolder() + fileName;
    g_wBuff->OpenKeepingBackup(*g_logPath);
  }
  LeadTo(*log);
  if (!NoTraceOption) WriteBanner();
}

}  // namespace trace

namespace {

constexpr char kLogModule[] = "mac/ServiceRecords/ServiceRecords/ServiceRecordMain.cpp";
constexpr std::int32_t kLogLine = 157;  // deliberate: one location, whoever calls

// The format with every %@ as %s.
std::string PrintfFormat(std::string_view format) {
  std::string result(format);
  for (std::size_t at = 0; (at = result.find('%', at)) < result.size() - 1; at += 2) {
    if (result[at + 1] == '@') result[at + 1] = 's';
  }
  return result;
}

// A format that does not fit its arguments is written as it stands: logging never fails its caller.
std::string Formatted(std::string_view format, std::span<const Agent::LogArgument> arguments) {
  fmt::dynamic_format_arg_store<fmt::printf_context> store;
  for (const Agent::LogArgument& argument : arguments) {
    if (const auto* text = std::get_if<std::string_view>(&argument.Get())) {
      store.push_back(std::string(*text));
    } else {
      store.push_back(std::get<long long>(argument.Get()));
    }
  }
  try {
    return fmt::vsprintf(fmt::string_view(PrintfFormat(format)),
                         fmt::basic_format_args<fmt::printf_context>(store));
  } catch (const fmt::format_error&) {
    return std::string(format);
  }
}

std::string LossyASCII(const std::string& utf8) {
  std::string ascii;
  for (const wchar_t character : util::widen(utf8))
    ascii += character < 0x80 ? static_cast<char>(character) : '?';
  return ascii;
}

}  // namespace

void CSRLogv(std::uint32_t level, std::string_view format, std::span<const Agent::LogArgument> arguments) {
  if (trace::Statement statement(level, kLogModule, kLogLine); statement.Listens()) {
    statement << LossyASCII(Formatted(format, arguments));
  }
}

void ServiceRecordUpdateLoggingFromPrefs() {
  const bool logging = Files::UserDefaults::Standard().Integer("LogLevel") != 0;
  // Held throughout, so that no other record comes between the last line and the switch.
  const ThreadSafety::MutexLock lock(trace::wdbgMutex);
  if (!logging && trace::IsEnabled()) CSRLog(0, "Logging Deactivated");
  trace::VerboseOption = logging;
  trace::NoTraceOption = !logging;
  if (trace::g_logWasOpened) {
    trace::Enable(logging);
    if (!logging) return;
  } else {
    if (!logging) return;
    trace::InitLog("ServiceRecord.log");
    trace::g_logWasOpened = true;
  }
  CSRLog(0, "Service Records Logging Active (v%@)", Files::Bundle::Main().InfoString("MorvaneVersionString"));
}

void ServiceRecordWFLogFunc(const char* message) {
  CSRLog(0, "%@", message);
}

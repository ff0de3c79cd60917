#include "DbgTrace.h"

#include "Bundle.h"
#include "LogFileBuffer.h"
#include "SRLib/TextHelpers.h"
#include "StandardDirectories.h"
#include "UserDefaults.h"

#include <fmt/args.h>
#include <fmt/printf.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <iomanip>
#include <iostream>
#include <sstream>

namespace trace {
namespace {

constexpr std::uint64_t kMaximumLogBytes = std::uint64_t{64} << 20;

// Accepts every character and writes nothing.
class nul_buff : public std::wstreambuf {
 protected:
  int_type overflow(int_type character) override { return traits_type::not_eof(character); }
};

// The stream objects outlive every static object that may trace on its way out, so they are never destroyed.
LogFileBuffer& g_wBuff = *new LogFileBuffer;
nul_buff& g_NullBuff = *new nul_buff;

std::string& g_logPath = *new std::string;
bool g_logWasOpened = false;
int g_openRecords = 0;  // a piece of a record may write one in turn

std::string GetCurrentTime() {
  const auto now = std::chrono::system_clock::now();
  const auto milliseconds =
      std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()).count() % 1000;
  const std::time_t seconds = std::chrono::system_clock::to_time_t(now);
  std::tm local{};
  localtime_r(&seconds, &local);
  char text[256] = {};
  std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &local);
  return fmt::sprintf("%s.%03d", text, milliseconds);
}

// Standard error is the console of a program without a window. A channel that cannot be opened drops what is
// written to it.
LogFileBuffer& ConsoleChannel() {
  static LogFileBuffer& channel = []() -> LogFileBuffer& {
    auto& buffer = *new LogFileBuffer;
    buffer.OpenStandardError();
    return buffer;
  }();
  return channel;
}

void Attach(std::wstreambuf& target) {
  wdbg.flush();
  wdbg.rdbuf(&target);
  wdbg.clear();
}

void WriteBanner() {
  wdbg << std::endl;
  wdbg << std::string_view(" === Morvane Quillon logging started " + GetCurrentTime() + " ===") << std::endl;
  wdbg << std::endl;
}

// Called between two records.
void KeepLogBounded() {
  if (wdbg.rdbuf() != &g_wBuff || g_wBuff.Size() < kMaximumLogBytes) return;
  g_wBuff.BeginAnew(g_logPath);
  WriteBanner();
}

// Without a home the path starts at the root.
std::string LogFolder() {
  const char* home = std::getenv("HOME");
  return std::string(home != nullptr ? home : "") + "/Library/Logs/";
}

}  // namespace

std::recursive_mutex wdbgMutex;
std::wostream& wdbg = *new std::wostream(&g_wBuff);
bool NoTraceOption = true;
bool VerboseOption = false;
bool ConsoleOption = false;

namespace {

// The rest of this namespace is called under the mutex, which every statement would otherwise take again.
bool LeadsAnywhere() {
  return wdbg.rdbuf() != &g_NullBuff;
}

bool Switch(bool on) {
  if (!wdbg.good()) wdbg.clear();  // a write that failed earlier (a full disk) must not silence this record
  const bool before = LeadsAnywhere();
  if (on == before) return before;
  if (!on) {
    Attach(g_NullBuff);
    return before;
  }
  std::wstreambuf* target = NoTraceOption ? static_cast<std::wstreambuf*>(&g_NullBuff) : &g_wBuff;
  // Deliberate: the console is attached first, and the file buffer then wins.
  if (ConsoleOption && !NoTraceOption) wdbg.rdbuf(&ConsoleChannel());
  if (wdbg.rdbuf() != target) Attach(*target);
  return before;
}

void SetLevel(std::wostream& stream, std::uint32_t value) {
  stream.iword(GetLevelIndex()) = static_cast<long>(value);
  Switch(value != 0 || VerboseOption);
}

}  // namespace

bool IsEnabled() {
  const std::lock_guard lock(wdbgMutex);
  return LeadsAnywhere();
}

bool Enable(bool on) {
  const std::lock_guard lock(wdbgMutex);
  return Switch(on);
}

int GetLevelIndex() {
  static const int index = std::ios_base::xalloc();
  return index;
}

void level::set(std::wostream& stream) const {
  const std::lock_guard lock(wdbgMutex);
  SetLevel(stream, value);
}

std::wostream& operator<<(std::wostream& stream, std::string_view utf8) {
  std::wstring bytes(utf8.size(), L'\0');
  std::transform(utf8.begin(), utf8.end(), bytes.begin(),
                 [](char byte) { return static_cast<wchar_t>(static_cast<unsigned char>(byte)); });
  return stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

std::wostream& operator<<(std::wostream& stream, std::wstring_view text) {
  return stream << std::string_view(util::narrow(text));
}

std::wostream& operator<<(std::wostream& stream, const location& where) {
  std::wostringstream prefix;
  // The thread field is deliberately a constant.
  prefix << L"[" << util::widen(GetCurrentTime()) << L"] [T" << std::hex << std::setw(8) << std::setfill(L'0')
         << L"Unknown" << std::dec << L"] [" << where.file.substr(where.file.rfind(L'/') + 1) << L":"
         << where.line << L"]  ";
  stream << std::wstring_view(prefix.str());
  return stream.flush();
}

Statement::Statement(std::uint32_t traceLevel, const char* file, std::int32_t line) : lock_(wdbgMutex) {
  SetLevel(wdbg, traceLevel);
  listens_ = LeadsAnywhere();
  if (!listens_) return;
  ++g_openRecords;
  wdbg << location{util::widen(file), line};
}

void Statement::WriteEnd() {
  listens_ = false;
  wdbg << std::endl;
  if (--g_openRecords == 0) KeepLogBounded();
}

Statement& Statement::operator<<(std::string_view utf8) {
  wdbg << utf8;
  return *this;
}

Statement& Statement::operator<<(std::wstring_view text) {
  wdbg << text;
  return *this;
}

void InitLog(const std::string& fileName) {
  const std::lock_guard lock(wdbgMutex);
  const std::string path = LogFolder() + fileName;
  if (NoTraceOption) {
    wdbg.rdbuf(&g_NullBuff);
    return;
  }
  if (ConsoleOption) {
    wdbg.rdbuf(&ConsoleChannel());
  } else {
    static_cast<void>(StandardDirectories::CreateDirectories(LogFolder()));
    g_logPath = path;
    g_wBuff.OpenKeepingBackup(path);
    wdbg.rdbuf(&g_wBuff);  // also when an earlier record has led the stream elsewhere, or found it closed
  }
  wdbg.copyfmt(std::wcout);
  wdbg.setf(std::ios::unitbuf);
  WriteBanner();
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
std::string Formatted(std::string_view format, std::span<const LogArgument> arguments) {
  fmt::dynamic_format_arg_store<fmt::printf_context> store;
  for (const LogArgument& argument : arguments) {
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

void CSRLogv(std::uint32_t level, std::string_view format, std::span<const LogArgument> arguments) {
  if (trace::Statement statement(level, kLogModule, kLogLine); statement.Listens()) {
    statement << LossyASCII(Formatted(format, arguments));
  }
}

void ServiceRecordUpdateLoggingFromPrefs() {
  const bool logging = UserDefaults::Standard().Integer("LogLevel") != 0;
  // Held throughout, so that no other record comes between the last line and the switch.
  const std::lock_guard lock(trace::wdbgMutex);
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
  CSRLog(0, "Service Records Logging Active (v%@)", Bundle::Main().InfoString("MorvaneVersionString"));
}

void ServiceRecordWFLogFunc(const char* message) {
  CSRLog(0, "%@", message);
}

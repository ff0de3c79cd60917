#include "libs/Trace/Trace.h"

#include "libs/Lifetime/NoDestructor.h"
#include "libs/Text/TextHelpers.h"

#include <algorithm>
#include <chrono>
#include <ctime>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <sstream>

namespace trace {
namespace {

// Accepts every character and writes nothing.
class nul_buff : public std::wstreambuf {
 protected:
  int_type overflow(int_type character) override { return traits_type::not_eof(character); }
};

// What the stream leads to until there is a log: a file that is not open, so that writes fail silently.
class NoLog : public Log {
 public:
  std::wstreambuf& File() override { return file_; }
  std::wstreambuf& Console() override { return file_; }
  void KeepBounded() override {}

 private:
  std::wfilebuf file_;
};

// The stream objects outlive every static object that may trace on its way out.
Lifetime::NoDestructor<NoLog> g_noLog;
Log* g_log SR_GUARDED_BY(wdbgMutex) = &*g_noLog;
Lifetime::NoDestructor<nul_buff> g_NullBuff;
Lifetime::NoDestructor<std::wostream> g_stream(&g_noLog->File());

int g_openRecords SR_GUARDED_BY(wdbgMutex) = 0;  // a piece of a record may write one in turn

void Attach(std::wstreambuf& target) SR_REQUIRES(wdbgMutex) {
  wdbg.flush();
  wdbg.rdbuf(&target);
  wdbg.clear();
}

}  // namespace

ThreadSafety::RecursiveMutex wdbgMutex;
std::wostream& wdbg = *g_stream;
bool NoTraceOption = true;
bool VerboseOption = false;
bool ConsoleOption = false;

namespace {

// These do not take the mutex again, as every statement would.
bool LeadsAnywhere() SR_REQUIRES(wdbgMutex) {
  return wdbg.rdbuf() != &*g_NullBuff;
}

bool Switch(bool on) SR_REQUIRES(wdbgMutex) {
  if (!wdbg.good()) wdbg.clear();  // a write that failed earlier (a full disk) must not silence this record
  const bool before = LeadsAnywhere();
  if (on == before) return before;
  if (!on) {
    Attach(*g_NullBuff);
    return before;
  }
  std::wstreambuf& target = NoTraceOption ? static_cast<std::wstreambuf&>(*g_NullBuff) : g_log->File();
  // Deliberate: the console is attached first, and the file buffer then wins.
  if (ConsoleOption && !NoTraceOption) wdbg.rdbuf(&g_log->Console());
  if (wdbg.rdbuf() != &target) Attach(target);
  return before;
}

void SetLevel(std::wostream& stream, std::uint32_t value) SR_REQUIRES(wdbgMutex) {
  stream.iword(GetLevelIndex()) = static_cast<long>(value);
  Switch(value != 0 || VerboseOption);
}

}  // namespace

void LeadTo(Log& log) {
  g_log = &log;
  if (NoTraceOption) {
    wdbg.rdbuf(&*g_NullBuff);
    return;
  }
  wdbg.rdbuf(ConsoleOption ? &log.Console() : &log.File());
  wdbg.copyfmt(std::wcout);
  wdbg.setf(std::ios::unitbuf);
}

bool IsEnabled() {
  const ThreadSafety::MutexLock lock(wdbgMutex);
  return LeadsAnywhere();
}

bool Enable(bool on) {
  const ThreadSafety::MutexLock lock(wdbgMutex);
  return Switch(on);
}

int GetLevelIndex() {
  static const int index = std::ios_base::xalloc();
  return index;
}

std::string GetCurrentTime() {
  const auto now = std::chrono::system_clock::now();
  const auto milliseconds =
      std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()).count() % 1000;
  const std::time_t seconds = std::chrono::system_clock::to_time_t(now);
  std::tm local{};
  localtime_r(&seconds, &local);
  char text[256] = {};
  std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &local);
  return std::string(text) + "." + std::to_string(1000 + milliseconds).substr(1);
}

void level::set(std::wostream& stream) const {
  const ThreadSafety::MutexLock lock(wdbgMutex);
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
  if (--g_openRecords == 0) g_log->KeepBounded();
}

Statement& Statement::operator<<(std::string_view utf8) {
  wdbg << utf8;
  return *this;
}

Statement& Statement::operator<<(std::wstring_view text) {
  wdbg << text;
  return *this;
}

}  // namespace trace

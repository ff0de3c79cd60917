#pragma once

#include "libs/ThreadSafety/ThreadSafety.h"

#include <cstdint>
#include <ostream>
#include <streambuf>
#include <string>
#include <string_view>

// The process-wide trace stream. Records are written with SR_TRACE; whoever keeps the log says with LeadTo
// where they go. Any thread may trace; a record is written whole, under wdbgMutex.
namespace trace {

// Levels in use: 0 progress, 1 warning, 2 failure, 3 fatal.
struct level {
  std::uint32_t value;
  // Stores the level in the stream's slot and re-decides whether the stream is enabled.
  void set(std::wostream& stream) const;
};

// The source file and line of a record.
struct location {
  std::wstring file;
  std::int32_t line;
};

extern ThreadSafety::RecursiveMutex wdbgMutex;
extern std::wostream& wdbg;

// True until the preferences turn logging on; level 0 is written too; console channel instead of the file,
// which nothing sets.
extern bool NoTraceOption SR_GUARDED_BY(wdbgMutex);
extern bool VerboseOption SR_GUARDED_BY(wdbgMutex);
extern bool ConsoleOption SR_GUARDED_BY(wdbgMutex);

// True while the stream leads anywhere but the null buffer.
[[nodiscard]] bool IsEnabled();

// Switches between the log and the null buffer; tells whether the stream was enabled before.
bool Enable(bool on);

// The index of the stream's slot that holds a record's level.
[[nodiscard]] int GetLevelIndex();

// "YYYY-MM-DD hh:mm:ss.mmm", local time.
[[nodiscard]] std::string GetCurrentTime();

// A log that the stream leads to while it is enabled. Outlives every statement.
class Log {
 public:
  virtual ~Log() = default;
  [[nodiscard]] virtual std::wstreambuf& File() = 0;
  [[nodiscard]] virtual std::wstreambuf& Console() = 0;
  // Called between two records.
  virtual void KeepBounded() SR_REQUIRES(wdbgMutex) = 0;
};

// From now on the stream leads to the log's file, or to its console, or nowhere where the options want that.
// What was written before is dropped.
void LeadTo(Log& log) SR_REQUIRES(wdbgMutex);

// Records are written with SR_TRACE only: what is put into the stream directly has to be bytes already.
// Writes the line prefix: time stamp, thread field, file name and line.
std::wostream& operator<<(std::wostream& stream, const location& where);
// Writes the bytes one by one, each as one character, so that the log carries them unchanged.
std::wostream& operator<<(std::wostream& stream, std::string_view utf8);
// Converts to UTF-8 and writes the bytes.
std::wostream& operator<<(std::wostream& stream, std::wstring_view text);

// One record: holds the mutex for its whole life and ends the line at its end.
class SR_SCOPED_CAPABILITY Statement {
 public:
  Statement(std::uint32_t level, const char* file, std::int32_t line) SR_ACQUIRE(wdbgMutex);
  ~Statement() SR_RELEASE() { End(); }
  Statement(const Statement&) = delete;
  Statement& operator=(const Statement&) = delete;

  [[nodiscard]] bool Listens() const { return listens_; }
  void End() SR_REQUIRES(wdbgMutex) {
    if (listens_) WriteEnd();
  }

  Statement& operator<<(std::string_view utf8);
  Statement& operator<<(std::wstring_view text);
  Statement& operator<<(const char* utf8) { return *this << std::string_view(utf8); }
  Statement& operator<<(const wchar_t* text) { return *this << std::wstring_view(text); }
  Statement& operator<<(std::uint64_t number) { return *this << std::to_string(number); }
  Statement& operator<<(std::uint32_t number) { return *this << std::to_string(number); }

 private:
  void WriteEnd() SR_REQUIRES(wdbgMutex);

  const ThreadSafety::MutexLock<ThreadSafety::RecursiveMutex> lock_;
  bool listens_ = false;
};

}  // namespace trace

// Writes one record: SR_TRACE(level) << piece << piece. The pieces are evaluated only when something listens.
#define SR_TRACE(traceLevel) SR_TRACE_AT(__FILE__, traceLevel)

// The same for a record that bears another file's name than that of the one in which it is written.
#define SR_TRACE_AT(file, traceLevel)                                                                 \
  for (trace::Statement srTraceStatement((traceLevel), (file), __LINE__); srTraceStatement.Listens(); \
       srTraceStatement.End())                                                                        \
  srTraceStatement

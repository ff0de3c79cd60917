#pragma once

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

namespace testsupport {

// One finished record of the trace log: its level, the name of the source file that wrote it and its text
// (UTF-8, without the line's prefix).
struct TraceRecord {
  std::uint32_t level = 0;
  std::string file;
  std::string text;
  bool insideCriticalSection = false;  // not compared

  bool operator==(const TraceRecord& other) const {
    return level == other.level && file == other.file && text == other.text;
  }
};

void PrintTo(const TraceRecord& record, std::ostream* stream);

// The trace log in memory. Any thread may trace; a record counts when it has ended.
class CapturedTrace {
 public:
  // Forgets the records, and takes new ones.
  static void Clear();
  // Takes no records until it is cleared, as the log does while it is off.
  static void SwitchOff();
  [[nodiscard]] static std::vector<TraceRecord> Records();
  // The texts of the records that one source file wrote.
  [[nodiscard]] static std::vector<std::string> TextsFrom(const std::string& file);
  // Whether the thread that wrote the file's records was inside a critical section, for any of them.
  [[nodiscard]] static bool AnyInsideCriticalSection(const std::string& file);
  // The records whose text begins with `start`.
  [[nodiscard]] static std::vector<TraceRecord> RecordsStartingWith(const std::string& start);
};

}  // namespace testsupport

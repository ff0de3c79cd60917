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

  bool operator==(const TraceRecord&) const = default;
};

void PrintTo(const TraceRecord& record, std::ostream* stream);

// The trace log in memory. Any thread may trace; a record counts when it has ended.
class CapturedTrace {
 public:
  static void Clear();
  [[nodiscard]] static std::vector<TraceRecord> Records();
  // The texts of the records that one source file wrote.
  [[nodiscard]] static std::vector<std::string> TextsFrom(const std::string& file);
  // The records whose text begins with `start`.
  [[nodiscard]] static std::vector<TraceRecord> RecordsStartingWith(const std::string& start);
};

}  // namespace testsupport

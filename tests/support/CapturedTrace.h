#pragma once

#include <cstdint>
#include <functional>
#include <ostream>
#include <streambuf>
#include <string>
#include <vector>

namespace TestSupport {

// One finished record of the trace log: its level, the name of the source file that it bears and its text
// (UTF-8, without the line's prefix).
struct TraceRecord {
  std::uint32_t level = 0;
  std::string file;
  std::string text;
  bool isMarked = false;  // not compared

  bool operator==(const TraceRecord& other) const {
    return level == other.level && file == other.file && text == other.text;
  }
};

void PrintTo(const TraceRecord& record, std::ostream* stream);

// Takes the place of the trace log, all levels, as long as it lives, and keeps its records. Any thread may
// trace; a record counts when it has ended.
class CapturedTrace : private std::wstreambuf {
 public:
  // `isMarked` is asked when a record begins, on the thread that writes it.
  explicit CapturedTrace(std::function<bool()> isMarked = nullptr);
  ~CapturedTrace() override;
  CapturedTrace(const CapturedTrace&) = delete;
  CapturedTrace& operator=(const CapturedTrace&) = delete;

  // Forgets the records.
  void Clear();
  [[nodiscard]] std::vector<TraceRecord> Records() const;
  // The texts of the records that bear the file's name.
  [[nodiscard]] std::vector<std::string> TextsFrom(const std::string& file) const;
  // Whether any record that bears the file's name is marked.
  [[nodiscard]] bool AnyMarked(const std::string& file) const;
  // The records whose text begins with `start`.
  [[nodiscard]] std::vector<TraceRecord> RecordsStartingWith(const std::string& start) const;

 private:
  int_type overflow(int_type character) override;
  std::streamsize xsputn(const wchar_t* characters, std::streamsize count) override;
  int sync() override;

  void Begin(const std::string& prefix);
  void End();

  const std::function<bool()> isMarked_;
  // Guarded by the trace's mutex.
  std::string unflushed_;
  std::size_t lastPiece_ = 0;  // its place in what was not flushed
  // A piece of a record may itself write one, so records can be open inside others.
  std::vector<TraceRecord> open_;
  std::vector<TraceRecord> finished_;
  std::wstreambuf* before_ = nullptr;
  bool verboseBefore_ = false;
};

}  // namespace TestSupport

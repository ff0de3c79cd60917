#include "support/CapturedTrace.h"

#include "libs/Trace/Trace.h"

#include <algorithm>
#include <mutex>
#include <utility>

namespace TestSupport {

void PrintTo(const TraceRecord& record, std::ostream* stream) {
  *stream << "{" << record.level << ", " << record.file << ", \"" << record.text.substr(0, 500) << "\"}";
}

CapturedTrace::CapturedTrace(std::function<bool()> isMarked) : isMarked_(std::move(isMarked)) {
  const std::lock_guard lock(trace::wdbgMutex);
  before_ = trace::wdbg.rdbuf(this);
  verboseBefore_ = std::exchange(trace::VerboseOption, true);
}

CapturedTrace::~CapturedTrace() {
  const std::lock_guard lock(trace::wdbgMutex);
  trace::wdbg.rdbuf(before_);
  trace::VerboseOption = verboseBefore_;
}

void CapturedTrace::Clear() {
  const std::lock_guard lock(trace::wdbgMutex);
  finished_.clear();
}

std::vector<TraceRecord> CapturedTrace::Records() const {
  const std::lock_guard lock(trace::wdbgMutex);
  return finished_;
}

std::vector<std::string> CapturedTrace::TextsFrom(const std::string& file) const {
  std::vector<std::string> texts;
  for (const TraceRecord& record : Records()) {
    if (record.file == file) texts.push_back(record.text);
  }
  return texts;
}

bool CapturedTrace::AnyMarked(const std::string& file) const {
  return std::ranges::any_of(
      Records(), [&file](const TraceRecord& record) { return record.file == file && record.isMarked; });
}

std::vector<TraceRecord> CapturedTrace::RecordsStartingWith(const std::string& start) const {
  std::vector<TraceRecord> records = Records();
  std::erase_if(records, [&start](const TraceRecord& record) { return !record.text.starts_with(start); });
  return records;
}

std::wstreambuf::int_type CapturedTrace::overflow(int_type character) {
  if (traits_type::eq_int_type(character, traits_type::eof())) return traits_type::not_eof(character);
  const wchar_t byte = traits_type::to_char_type(character);
  return xsputn(&byte, 1) == 1 ? character : traits_type::eof();
}

std::streamsize CapturedTrace::xsputn(const wchar_t* characters, std::streamsize count) {
  lastPiece_ = unflushed_.size();
  for (std::streamsize i = 0; i < count; ++i) unflushed_ += static_cast<char>(characters[i]);
  return count;
}

// A record flushes twice: behind its prefix, and behind the line's end. Each is a piece of its own.
int CapturedTrace::sync() {
  const std::string lastPiece = unflushed_.substr(lastPiece_);
  if (!open_.empty()) open_.back().text += unflushed_.substr(0, lastPiece_);
  if (lastPiece == "\n") End();
  if (lastPiece.starts_with('[')) Begin(lastPiece);
  unflushed_.clear();
  lastPiece_ = 0;
  return 0;
}

void CapturedTrace::Begin(const std::string& prefix) {
  const std::size_t file = prefix.rfind('[') + 1;
  const auto level = static_cast<std::uint32_t>(trace::wdbg.iword(trace::GetLevelIndex()));
  open_.push_back({.level = level,
                   .file = prefix.substr(file, prefix.rfind(':') - file),
                   .text = "",
                   .isMarked = isMarked_ && isMarked_()});
}

void CapturedTrace::End() {
  finished_.push_back(std::move(open_.back()));
  open_.pop_back();
}

}  // namespace TestSupport

#include "fakes/CapturedTrace.h"

#include "fakes/FakeCriticalSections.h"
#include "libs/Text/TextHelpers.h"
#include "libs/Trace/Trace.h"

#include <algorithm>
#include <mutex>

namespace testsupport {
namespace {

// Guarded by wdbgMutex. A piece of a record may itself write one, so records can be open inside others.
std::vector<TraceRecord> finished;
std::vector<TraceRecord> open;
bool isOn = true;

}  // namespace

void PrintTo(const TraceRecord& record, std::ostream* stream) {
  *stream << "{" << record.level << ", " << record.file << ", \"" << record.text.substr(0, 500) << "\"}";
}

void CapturedTrace::Clear() {
  const std::lock_guard lock(trace::wdbgMutex);
  finished.clear();
  isOn = true;
}

void CapturedTrace::SwitchOff() {
  const std::lock_guard lock(trace::wdbgMutex);
  isOn = false;
}

std::vector<TraceRecord> CapturedTrace::Records() {
  const std::lock_guard lock(trace::wdbgMutex);
  return finished;
}

std::vector<std::string> CapturedTrace::TextsFrom(const std::string& file) {
  std::vector<std::string> texts;
  for (const TraceRecord& record : Records()) {
    if (record.file == file) texts.push_back(record.text);
  }
  return texts;
}

bool CapturedTrace::AnyInsideCriticalSection(const std::string& file) {
  const std::vector<TraceRecord> records = Records();
  return std::ranges::any_of(
      records, [&file](const auto& record) { return record.file == file && record.insideCriticalSection; });
}

std::vector<TraceRecord> CapturedTrace::RecordsStartingWith(const std::string& start) {
  std::vector<TraceRecord> records = Records();
  std::erase_if(records, [&start](const TraceRecord& record) { return !record.text.starts_with(start); });
  return records;
}

}  // namespace testsupport

namespace trace {

using testsupport::finished;
using testsupport::open;

std::recursive_mutex wdbgMutex;

bool IsEnabled() {
  const std::lock_guard lock(wdbgMutex);
  return testsupport::isOn;
}

Statement::Statement(std::uint32_t traceLevel, const char* file, std::int32_t /*line*/)
    : lock_(wdbgMutex), listens_(testsupport::isOn) {
  if (!listens_) return;
  const std::string path(file);
  open.push_back({traceLevel, path.substr(path.rfind('/') + 1), "", testsupport::InsideCriticalSection()});
}

void Statement::WriteEnd() {
  finished.push_back(std::move(open.back()));
  open.pop_back();
  listens_ = false;
}

Statement& Statement::operator<<(std::string_view utf8) {
  open.back().text += utf8;
  return *this;
}

Statement& Statement::operator<<(std::wstring_view text) {
  return *this << std::string_view(util::narrow(text));
}

}  // namespace trace

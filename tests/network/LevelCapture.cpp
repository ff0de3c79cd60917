#include "network/LevelCapture.h"

#include "DbgTrace.h"

#include <mutex>
#include <utility>

namespace TestSupport {

LevelCapture::LevelCapture() {
  const std::lock_guard lock(trace::wdbgMutex);
  before_ = trace::wdbg.rdbuf(this);
  verboseBefore_ = std::exchange(trace::VerboseOption, true);
}

LevelCapture::~LevelCapture() {
  const std::lock_guard lock(trace::wdbgMutex);
  trace::wdbg.rdbuf(before_);
  trace::VerboseOption = verboseBefore_;
}

std::wstreambuf::int_type LevelCapture::overflow(int_type character) {
  levels_.insert(trace::wdbg.iword(trace::GetLevelIndex()));
  return traits_type::not_eof(character);
}

}  // namespace TestSupport

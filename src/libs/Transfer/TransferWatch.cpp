#include "libs/Transfer/TransferWatch.h"

namespace Transfer {

bool TransferWatch::TakeHeader(Time now, std::uint64_t bytes) {
  if (!firstHeader_) firstHeader_ = now;
  headerBytes_ += bytes;
  return headerBytes_ <= limits_.mostHeaderBytes;
}

bool TransferWatch::Continues(Time now, std::optional<std::uint64_t> bodyBytes) {
  if (!IsInTime(now)) return false;
  if (!bodyBytes) {
    window_.clear();
    return true;
  }
  return *bodyBytes <= limits_.mostBodyBytes && IsFastEnough({now, *bodyBytes});
}

bool TransferWatch::IsInTime(Time now) const {
  return firstHeader_ ? now - *firstHeader_ < limits_.afterFirstHeader : now - start_ < limits_.toFirstHeader;
}

bool TransferWatch::IsFastEnough(Sample latest) {
  constexpr int kSamplesInWindow = 30;
  if (!window_.empty() && latest.bytes < window_.back().bytes) window_.clear();  // another response's body
  if (window_.empty() || latest.time - window_.back().time >= limits_.bodyWindow / kSamplesInWindow)
    window_.push_back(latest);
  while (window_.size() > 1 && latest.time - window_[1].time >= limits_.bodyWindow) window_.pop_front();
  const Sample& oldest = window_.front();
  return latest.time - oldest.time < limits_.bodyWindow ||
         latest.bytes - oldest.bytes >= limits_.leastBytesInWindow;
}

}  // namespace Transfer

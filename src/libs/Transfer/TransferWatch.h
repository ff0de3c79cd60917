#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <optional>

namespace Transfer {

// What one transfer may cost, redirects included. Its headers are those of all responses; its body is that of
// each response by itself, whatever its status.
struct TransferLimits {
  std::chrono::milliseconds toFirstHeader = std::chrono::seconds(90);
  std::chrono::milliseconds afterFirstHeader = std::chrono::minutes(2);
  std::chrono::milliseconds bodyWindow = std::chrono::seconds(30);
  std::uint64_t leastBytesInWindow = 30 * 1024;  // in any stretch of that length
  std::uint64_t mostBodyBytes = 16 * 1024 * 1024;
  std::uint64_t mostHeaderBytes = 256 * 1024;
};

// Watches that a transfer keeps within its limits. The caller says what arrives and what time it is. One
// thread.
class TransferWatch {
 public:
  using Time = std::chrono::steady_clock::time_point;

  TransferWatch(const TransferLimits& limits, Time start) : limits_(limits), start_(start) {}

  // A header line of this many bytes. False past a limit, after which nothing more counts.
  [[nodiscard]] bool TakeHeader(Time now, std::uint64_t bytes);
  // Called again and again. `bodyBytes`: how much of a body has arrived; nothing while there is none to wait
  // for. False past a limit.
  [[nodiscard]] bool Continues(Time now, std::optional<std::uint64_t> bodyBytes);

 private:
  struct Sample {
    Time time;
    std::uint64_t bytes = 0;
  };

  [[nodiscard]] bool IsInTime(Time now) const;
  [[nodiscard]] bool IsFastEnough(Sample latest);

  TransferLimits limits_;
  Time start_;
  std::optional<Time> firstHeader_;
  std::uint64_t headerBytes_ = 0;
  std::deque<Sample> window_;  // of the body, oldest first; that one stands where the window begins
};

}  // namespace Transfer

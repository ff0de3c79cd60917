#pragma once

#include "libs/HelperProgram/HelperProcess.h"

#include <array>
#include <chrono>
#include <cstddef>
#include <optional>
#include <span>
#include <string_view>

namespace HelperProgram {

// The two ways of one conversation with a running program: a request goes out while its answer comes in.
// Belongs to the thread that runs it.
class HelperConversation {
 public:
  using Clock = std::chrono::steady_clock;

  // The interruptions are only polled; -1: none.
  HelperConversation(HelperProcess program, int interruption, int furtherInterruption = -1)
      : program_(std::move(program)), interruptions_{interruption, furtherInterruption} {}

  // Waits until the program takes more of the request, has written something or has ended, and sends what it
  // takes. The request begins the same at each call. False on interruption and when the time is over.
  [[nodiscard]] bool Continue(std::string_view request,
                              std::optional<Clock::time_point> deadline = std::nullopt);
  // How many bytes of its output are there now, read into `buffer`.
  [[nodiscard]] std::size_t ReadSome(std::span<char> buffer);

  [[nodiscard]] bool HasEnded() const { return ended_; }
  // The program has ended or closed its output, so that what was read then is all.
  [[nodiscard]] bool IsOver() const { return ended_ || !outputOpen_; }

 private:
  [[nodiscard]] bool Wait(bool hasUnsent, std::optional<Clock::time_point> deadline);

  HelperProcess program_;
  std::array<int, 2> interruptions_;
  std::size_t sent_ = 0;
  bool outputOpen_ = true;
  bool ended_ = false;
};

}  // namespace HelperProgram

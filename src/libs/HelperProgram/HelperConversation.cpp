#include "libs/HelperProgram/HelperConversation.h"

#include <poll.h>

#include <algorithm>
#include <array>
#include <cerrno>

namespace HelperProgram {
namespace {

// For poll: -1 without a deadline.
int MillisecondsUntil(std::optional<HelperConversation::Clock::time_point> deadline) {
  if (!deadline) return -1;
  const auto left = *deadline - HelperConversation::Clock::now();
  const auto milliseconds = std::chrono::ceil<std::chrono::milliseconds>(left).count();
  return static_cast<int>(std::max<decltype(milliseconds)>(milliseconds, 0));
}

}  // namespace

bool HelperConversation::Continue(std::string_view request, std::optional<Clock::time_point> deadline) {
  if (!Wait(sent_ < request.size(), deadline)) return false;
  sent_ += program_.SendSome(request.substr(sent_));
  return true;
}

bool HelperConversation::Wait(bool hasUnsent, std::optional<Clock::time_point> deadline) {
  std::array<pollfd, 5> events{{{interruptions_[0], POLLIN, 0},
                                {interruptions_[1], POLLIN, 0},
                                {program_.Ended(), POLLIN, 0},
                                {outputOpen_ ? program_.Output() : -1, POLLIN, 0},
                                {hasUnsent ? program_.Input() : -1, POLLOUT, 0}}};
  int ready = -1;
  do {
    ready = ::poll(events.data(), events.size(), MillisecondsUntil(deadline));
  } while (ready < 0 && errno == EINTR);
  ended_ = events[2].revents != 0;
  return ready > 0 && events[0].revents == 0 && events[1].revents == 0;
}

std::size_t HelperConversation::ReadSome(std::span<char> buffer) {
  if (!outputOpen_) return 0;
  const std::optional<std::size_t> count = program_.ReadSome(buffer);
  outputOpen_ = count.has_value();
  return count.value_or(0);
}

}  // namespace HelperProgram

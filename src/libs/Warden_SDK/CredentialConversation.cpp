#include "libs/Warden_SDK/CredentialConversation.h"

#include <poll.h>
#include <string.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

namespace Warden {

CredentialConversation::CredentialConversation(HelperProcess program, Secret request,
                                               int cancellationDescriptor)
    : program_(std::move(program)),
      request_(std::move(request)),
      cancellationDescriptor_(cancellationDescriptor) {}

std::optional<CredentialMessage> CredentialConversation::AwaitReply(int limitMilliseconds) {
  std::optional<Clock::time_point> deadline;
  if (limitMilliseconds >= 0) deadline = Clock::now() + std::chrono::milliseconds(limitMilliseconds);
  while (Wait(deadline)) {
    sent_ += program_.SendSome(request_.View().substr(sent_));
    ReadAll();
    if (CredentialMessage::LengthOf(reply_.View())) return CredentialMessage::Parse(reply_.View());
    const bool isTooLong = reply_.View().size() >= CredentialMessage::kMaximumBytes;
    if (!outputOpen_ || ended_ || isTooLong) return std::nullopt;
  }
  return std::nullopt;
}

bool CredentialConversation::Wait(std::optional<Clock::time_point> deadline) {
  const bool unsent = sent_ < request_.View().size();
  std::array<pollfd, 4> events{{{cancellationDescriptor_, POLLIN, 0},
                                {program_.Ended(), POLLIN, 0},
                                {outputOpen_ ? program_.Output() : -1, POLLIN, 0},
                                {unsent ? program_.Input() : -1, POLLOUT, 0}}};
  int ready = -1;
  do {
    int limit = -1;
    if (deadline) {
      const auto left = std::chrono::ceil<std::chrono::milliseconds>(*deadline - Clock::now()).count();
      limit = static_cast<int>(std::max<decltype(left)>(left, 0));
    }
    ready = ::poll(events.data(), events.size(), limit);
  } while (ready < 0 && errno == EINTR);
  ended_ = events[1].revents != 0;
  return ready > 0 && events[0].revents == 0;
}

void CredentialConversation::ReadAll() {
  std::array<char, 4096> buffer;
  while (outputOpen_ && reply_.View().size() < CredentialMessage::kMaximumBytes) {
    const std::optional<std::size_t> count = program_.ReadSome(buffer);
    outputOpen_ = count.has_value();
    if (count.value_or(0) == 0) break;
    reply_.Append({buffer.data(), *count});
  }
  ::explicit_bzero(buffer.data(), buffer.size());
}

}  // namespace Warden

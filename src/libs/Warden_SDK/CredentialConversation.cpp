#include "libs/Warden_SDK/CredentialConversation.h"

#include <string.h>

#include <array>
#include <chrono>
#include <utility>

namespace Warden {

CredentialConversation::CredentialConversation(HelperProgram::HelperProcess program,
                                               CredentialWire::Secret request, int cancellationDescriptor,
                                               int withdrawalDescriptor)
    : conversation_(std::move(program), cancellationDescriptor, withdrawalDescriptor),
      request_(std::move(request)) {}

std::optional<CredentialWire::CredentialMessage> CredentialConversation::AwaitReply(int limitMilliseconds) {
  using Clock = HelperProgram::HelperConversation::Clock;
  std::optional<Clock::time_point> deadline;
  if (limitMilliseconds >= 0) deadline = Clock::now() + std::chrono::milliseconds(limitMilliseconds);
  while (conversation_.Continue(request_.View(), deadline)) {
    ReadAll();
    if (CredentialWire::CredentialMessage::LengthOf(reply_.View()))
      return CredentialWire::CredentialMessage::Parse(reply_.View());
    const bool isTooLong = reply_.View().size() >= CredentialWire::CredentialMessage::kMaximumBytes;
    if (conversation_.IsOver() || isTooLong) return std::nullopt;
  }
  return std::nullopt;
}

void CredentialConversation::ReadAll() {
  std::array<char, 4096> buffer;
  while (reply_.View().size() < CredentialWire::CredentialMessage::kMaximumBytes) {
    const std::size_t count = conversation_.ReadSome(buffer);
    if (count == 0) break;
    reply_.Append({buffer.data(), count});
  }
  ::explicit_bzero(buffer.data(), buffer.size());
}

}  // namespace Warden

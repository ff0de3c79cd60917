#include "RequestReader.h"

#include <poll.h>
#include <string.h>
#include <unistd.h>

#include <array>
#include <cerrno>

namespace Credential {
namespace {

bool WaitFor(int input, int interruption) {
  std::array<pollfd, 2> states{{{input, POLLIN, 0}, {interruption, POLLIN, 0}}};
  while (::poll(states.data(), states.size(), -1) < 0) {
    if (errno != EINTR) return false;
  }
  return states[1].revents == 0;
}

}  // namespace

std::optional<CredentialWire::CredentialMessage> ReadRequest(int input, int interruption) {
  CredentialWire::Secret text;
  while (text.View().size() <= CredentialWire::CredentialMessage::kMaximumBytes &&
         WaitFor(input, interruption)) {
    std::array<char, 4096> buffer;
    const ssize_t count = ::read(input, buffer.data(), buffer.size());
    if (count < 0 && (errno == EINTR || errno == EAGAIN)) continue;
    if (count <= 0) return std::nullopt;
    text.Append({buffer.data(), static_cast<std::size_t>(count)});
    ::explicit_bzero(buffer.data(), buffer.size());
    if (CredentialWire::CredentialMessage::LengthOf(text.View()))
      return CredentialWire::CredentialMessage::Parse(text.View());
  }
  return std::nullopt;
}

}  // namespace Credential

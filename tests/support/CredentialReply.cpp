#include "support/CredentialReply.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>

using CredentialWire::CredentialMessage;

namespace TestSupport {

void SendRequest(const HelperProgram::HelperProcess& program, const std::string& text) {
  EXPECT_EQ(::send(program.Input(), text.data(), text.size(), MSG_NOSIGNAL),
            static_cast<ssize_t>(text.size()));
}

CredentialMessage ReplyOf(const HelperProgram::HelperProcess& program) {
  std::string text;
  while (!CredentialMessage::LengthOf(text)) {
    pollfd state{program.Output(), POLLIN, 0};
    std::array<char, 4096> buffer;
    if (::poll(&state, 1, 30'000) <= 0) {
      ADD_FAILURE() << "no reply";
      break;
    }
    const ssize_t count = ::read(program.Output(), buffer.data(), buffer.size());
    if (count <= 0) break;
    text.append(buffer.data(), static_cast<std::size_t>(count));
  }
  return CredentialMessage::Parse(text).value_or(CredentialMessage());
}

}  // namespace TestSupport

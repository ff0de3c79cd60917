#pragma once

#include "libs/Files/FileDescriptor.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstdint>
#include <system_error>

namespace TestSupport {

// A TCP port of 127.0.0.1 that nobody is given while this object lives, but that a server which asks for it
// by number gets.
class ReservedPort {
 public:
  // Throws std::system_error.
  ReservedPort() : socket_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    const int on = 1;
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto* const generic = reinterpret_cast<sockaddr*>(&address);
    if (::setsockopt(socket_.Get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on) != 0 ||
        ::bind(socket_.Get(), generic, size) != 0 || ::getsockname(socket_.Get(), generic, &size) != 0) {
      throw std::system_error(errno, std::generic_category(), "no port");
    }
    number_ = ntohs(address.sin_port);
  }

  [[nodiscard]] std::uint16_t Number() const { return number_; }

 private:
  Files::FileDescriptor socket_;
  std::uint16_t number_ = 0;
};

}  // namespace TestSupport

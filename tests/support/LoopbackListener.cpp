#include "support/LoopbackListener.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <cerrno>
#include <system_error>

namespace TestSupport {

LoopbackListener::LoopbackListener() : socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  auto* const generic = reinterpret_cast<sockaddr*>(&address);
  if (::bind(socket.Get(), generic, size) != 0 || ::listen(socket.Get(), SOMAXCONN) != 0 ||
      ::getsockname(socket.Get(), generic, &size) != 0) {
    throw std::system_error(errno, std::generic_category(), "no listening socket");
  }
  port = ntohs(address.sin_port);
}

}  // namespace TestSupport

#include "wayfinder/AddressServer.h"

#include <netdb.h>
#include <poll.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <memory>
#include <stdexcept>
#include <system_error>

namespace TestSupport {

AddressServer::AddressServer(const std::string& address, std::uint16_t port, std::string response)
    : response_(std::move(response)) {
  addrinfo hints{};
  hints.ai_flags = AI_NUMERICHOST;
  hints.ai_socktype = SOCK_STREAM;
  addrinfo* place = nullptr;
  if (::getaddrinfo(address.c_str(), std::to_string(port).c_str(), &hints, &place) != 0)
    throw std::invalid_argument("no address: " + address);
  const std::unique_ptr<addrinfo, decltype(&::freeaddrinfo)> owned(place, ::freeaddrinfo);
  listener_ = Files::FileDescriptor(::socket(place->ai_family, SOCK_STREAM | SOCK_CLOEXEC, 0));
  if (::bind(listener_.Get(), place->ai_addr, place->ai_addrlen) != 0 ||
      ::listen(listener_.Get(), SOMAXCONN) != 0)
    throw std::system_error(errno, std::generic_category(), "no server at " + address);
  thread_ = std::thread([this] { Serve(); });
}

AddressServer::~AddressServer() {
  ::shutdown(listener_.Get(), SHUT_RDWR);  // wakes the thread
  thread_.join();
}

void AddressServer::Serve() {
  std::array<char, 4096> part;
  while (true) {
    const Files::FileDescriptor connection(::accept4(listener_.Get(), nullptr, nullptr, SOCK_CLOEXEC));
    if (connection.Get() < 0) return;
    // Of a client whose link was taken away nothing comes, its end neither.
    std::array<pollfd, 2> either = {pollfd{connection.Get(), POLLIN, 0}, pollfd{listener_.Get(), 0, 0}};
    ::poll(either.data(), either.size(), -1);
    if (either[1].revents != 0) return;
    if (::recv(connection.Get(), part.data(), part.size(), 0) <= 0) continue;
    ++requests_;
    if (::send(connection.Get(), response_.data(), response_.size(), MSG_NOSIGNAL) < 0) continue;
    ::shutdown(connection.Get(), SHUT_WR);
  }
}

}  // namespace TestSupport

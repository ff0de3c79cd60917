#include "wayfinder/AddressServer.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <system_error>

namespace testsupport {

AddressServer::AddressServer(const std::string& address, std::uint16_t port, std::string response)
    : listener_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)), response_(std::move(response)) {
  sockaddr_in place{};
  place.sin_family = AF_INET;
  place.sin_port = htons(port);
  ::inet_pton(AF_INET, address.c_str(), &place.sin_addr);
  if (::bind(listener_.Get(), reinterpret_cast<sockaddr*>(&place), sizeof place) != 0 ||
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
    const OwnedDescriptor connection(::accept4(listener_.Get(), nullptr, nullptr, SOCK_CLOEXEC));
    if (connection.Get() < 0) return;
    if (::recv(connection.Get(), part.data(), part.size(), 0) <= 0) continue;
    ++requests_;
    if (::send(connection.Get(), response_.data(), response_.size(), MSG_NOSIGNAL) < 0) continue;
    ::shutdown(connection.Get(), SHUT_WR);
  }
}

}  // namespace testsupport

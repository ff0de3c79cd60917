#include "network/EndlessServer.h"

#include <sys/socket.h>
#include <sys/time.h>

#include <array>
#include <cerrno>
#include <utility>

namespace TestSupport {

EndlessServer::EndlessServer(std::string beginning, const std::string& repeated) {
  // Many at a time, so that the client is what takes the time.
  std::string block;
  while (block.size() < 64 * 1024) block += repeated;
  thread_ =
      std::thread([this, first = std::move(beginning), rest = std::move(block)] { Serve(first, rest); });
}

EndlessServer::~EndlessServer() {
  ending_ = true;
  ::shutdown(listener_.socket.Get(), SHUT_RDWR);
  if (thread_.joinable()) thread_.join();
}

std::uint64_t EndlessServer::Sent() {
  thread_.join();
  return sent_;
}

void EndlessServer::Serve(const std::string& beginning, const std::string& repeated) {
  const Files::FileDescriptor connection(::accept4(listener_.socket.Get(), nullptr, nullptr, SOCK_CLOEXEC));
  std::array<char, 4096> request;
  if (::recv(connection.Get(), request.data(), request.size(), 0) <= 0) return;
  const timeval look{.tv_sec = 0, .tv_usec = 50'000};
  ::setsockopt(connection.Get(), SOL_SOCKET, SO_SNDTIMEO, &look, sizeof look);
  bool goesOn = Send(connection.Get(), beginning);
  while (goesOn) goesOn = Send(connection.Get(), repeated);
}

bool EndlessServer::Send(int connection, const std::string& bytes) {
  std::size_t done = 0;
  while (done < bytes.size() && !ending_) {
    const ssize_t count = ::send(connection, bytes.data() + done, bytes.size() - done, MSG_NOSIGNAL);
    if (count < 0 && errno != EAGAIN) return false;
    if (count > 0) done += static_cast<std::size_t>(count);
  }
  sent_ += done;
  return !ending_;
}

}  // namespace TestSupport

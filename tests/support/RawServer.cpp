#include "support/RawServer.h"

#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <utility>

namespace TestSupport {
namespace {

std::string ReadRequest(int connection) {
  std::string request;
  std::array<char, 4096> part;
  while (request.find("\r\n\r\n") == std::string::npos) {
    const ssize_t count = ::recv(connection, part.data(), part.size(), 0);
    if (count <= 0) break;
    request.append(part.data(), static_cast<std::size_t>(count));
  }
  return request;
}

void Send(int connection, const std::string& bytes) {
  std::size_t sent = 0;
  while (sent < bytes.size()) {
    const ssize_t count = ::send(connection, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
    if (count <= 0) return;
    sent += static_cast<std::size_t>(count);
  }
}

}  // namespace

RawServer::RawServer(std::vector<std::string> responses)
    : responses_(std::move(responses)), thread_([this] { Serve(); }) {}

RawServer::RawServer(std::function<void()> onRequest)
    : onRequest_(std::move(onRequest)), thread_([this] { Serve(); }) {}

RawServer::~RawServer() {
  // Wakes the thread out of its wait for a connection.
  ::shutdown(listener_.socket.Get(), SHUT_RDWR);
  thread_.join();
}

std::vector<std::string> RawServer::Requests() const {
  const std::lock_guard lock(mutex_);
  return requests_;
}

void RawServer::Serve() {
  for (std::size_t number = 0;; ++number) {
    Files::FileDescriptor connection(::accept4(listener_.socket.Get(), nullptr, nullptr, SOCK_CLOEXEC));
    if (connection.Get() < 0) return;
    Answer(std::move(connection), number);
  }
}

void RawServer::Answer(Files::FileDescriptor connection, std::size_t number) {
  std::string request = ReadRequest(connection.Get());
  {
    const std::lock_guard lock(mutex_);
    requests_.push_back(std::move(request));
  }
  if (onRequest_) {
    unanswered_.push_back(std::move(connection));
    onRequest_();
  } else {
    Send(connection.Get(), responses_[std::min(number, responses_.size() - 1)]);
    // Waits for the client's end, so that no answer is lost to bytes that were not read.
    ::shutdown(connection.Get(), SHUT_WR);
    std::array<char, 256> rest;
    while (::recv(connection.Get(), rest.data(), rest.size(), 0) > 0) {
    }
  }
}

}  // namespace TestSupport

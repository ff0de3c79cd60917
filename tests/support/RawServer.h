#pragma once

#include "support/LoopbackListener.h"

#include <cstddef>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace TestSupport {

inline constexpr const char* kEmptyAnswer = "HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n";

// Answers each connection's first request with bytes of the test's choice and closes it. Its own thread,
// which ends with this object.
class RawServer {
 public:
  // `responses`: the bytes for the first connection, the second and so on; the last for all that follow.
  explicit RawServer(std::vector<std::string> responses);
  // `onRequest` is called on the server's thread for each request, which gets no answer before the server
  // ends.
  explicit RawServer(std::function<void()> onRequest);
  ~RawServer();

  [[nodiscard]] std::uint16_t Port() const { return listener_.port; }
  // http://127.0.0.1:port
  [[nodiscard]] std::wstring Address() const { return L"http://127.0.0.1:" + std::to_wstring(Port()); }
  // The requests so far, each from its first line to its blank line.
  [[nodiscard]] std::vector<std::string> Requests() const;

 private:
  void Serve();
  void Answer(Files::FileDescriptor connection, std::size_t number);

  LoopbackListener listener_;
  std::vector<std::string> responses_;
  std::function<void()> onRequest_;
  mutable std::mutex mutex_;
  std::vector<std::string> requests_;
  std::vector<Files::FileDescriptor> unanswered_;
  std::thread thread_;
};

}  // namespace TestSupport

#pragma once

#include "support/LoopbackListener.h"

#include <atomic>
#include <cstdint>
#include <string>
#include <thread>

namespace TestSupport {

// Answers its first connection without an end. Its own thread, which ends with this object or when the client
// closes the connection.
class EndlessServer {
 public:
  // Sends `beginning` once and then `repeated` again and again.
  EndlessServer(std::string beginning, const std::string& repeated);
  ~EndlessServer();

  // http://127.0.0.1:port
  [[nodiscard]] std::wstring Address() const {
    return L"http://127.0.0.1:" + std::to_wstring(listener_.port);
  }
  // How many bytes the connection took, once it has been closed by the client, which is waited for.
  [[nodiscard]] std::uint64_t Sent();

 private:
  void Serve(const std::string& beginning, const std::string& repeated);
  [[nodiscard]] bool Send(int connection, const std::string& bytes);

  LoopbackListener listener_;
  std::atomic<bool> ending_ = false;
  std::uint64_t sent_ = 0;
  std::thread thread_;
};

}  // namespace TestSupport

#pragma once

#include "libs/Files/FileDescriptor.h"

#include <atomic>
#include <cstdint>
#include <string>
#include <thread>

namespace TestSupport {

// Answers every HTTP request on an address of the namespace in which it was made, with the same bytes. Its
// own thread, which ends with this object.
class AddressServer {
 public:
  // Throws std::system_error.
  AddressServer(const std::string& address, std::uint16_t port, std::string response);
  ~AddressServer();

  [[nodiscard]] int Requests() const { return requests_; }

 private:
  void Serve();

  Files::FileDescriptor listener_;
  std::string response_;
  std::atomic<int> requests_ = 0;
  std::thread thread_;
};

}  // namespace TestSupport

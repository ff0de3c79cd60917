#pragma once

#include "libs/Wayfinder/Probing/CurlHandles.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Wayfinding {

// The sockets that libcurl opens for one transfer. Of a host with several addresses it tries one after
// another or two at once, goes on with the first that is connected, and closes the others. Which one that is,
// some releases do not tell when the handshake fails. One thread.
class TriedSockets {
 public:
  TriedSockets() = default;
  TriedSockets(const TriedSockets&) = delete;
  TriedSockets& operator=(const TriedSockets&) = delete;

  // The sockets of this transfer, which must not outlive this object.
  void Watch(CURL* transfer);
  // To be called once the handshake begins, when only one socket is open.
  void NoteConnected() noexcept;

  // The numeric address of the connected one; empty before.
  [[nodiscard]] std::string ConnectedAddress() const;

 private:
  struct Tried {
    int descriptor;
    std::uint64_t cookie;
    std::string address;
  };

  static curl_socket_t Open(void* self, curlsocktype purpose, curl_sockaddr* address);

  std::vector<Tried> tried_;
  std::optional<std::size_t> connected_;
};

}  // namespace Wayfinding

#pragma once

#include <memory>
#include <vector>

struct nl_sock;
struct nl_msg;

namespace Wayfinding {

// What the kernel reported since it was last asked.
struct NetworkEvents {
  bool any = false;
  // Indexes of links that were seen down, or without an address or a default route that they had before, even
  // if it came back since.
  std::vector<int> linksThatLost;
  bool mayHaveLostAny = false;  // which links is not known
};

// Hears of changes of links, addresses, routes and routing rules. One thread.
class NetworkMonitor {
 public:
  // Nothing when the kernel does not tell.
  static std::unique_ptr<NetworkMonitor> Open();
  ~NetworkMonitor();

  // Readable when there are events.
  [[nodiscard]] int Descriptor() const;
  // Takes the events that are there, without waiting. Events that got lost may have been of any kind.
  [[nodiscard]] NetworkEvents Take();

 private:
  struct SocketDeleter {
    void operator()(nl_sock* socket) const noexcept;
  };
  NetworkMonitor() = default;
  static int TakeMessage(nl_msg* message, void* events);

  std::unique_ptr<nl_sock, SocketDeleter> socket_;
  NetworkEvents events_;
};

}  // namespace Wayfinding

#pragma once

#include "libs/Lifetime/UniqueHandle.h"

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

  // Readable when there are events.
  [[nodiscard]] int Descriptor() const;
  // Takes the events that are there, without waiting. Events that got lost may have been of any kind.
  [[nodiscard]] NetworkEvents Take();

 private:
  NetworkMonitor() = default;
  static void Free(nl_sock* socket);
  static int TakeMessage(nl_msg* message, void* events);

  Lifetime::UniqueHandle<nl_sock, Free> socket_;
  NetworkEvents events_;
};

}  // namespace Wayfinding

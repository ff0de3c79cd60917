#pragma once

#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

namespace TestSupport {

// Stands before the network as long as it lives: keeps which servers this program turns to, by name or by
// number, and lets it reach none of them. The calls of the C library are this test program's own. One object
// at a time.
class ReachedServers {
 public:
  struct Server {
    std::string host;  // a name as it is looked up, or a numeric address
    std::string port;
  };

  ReachedServers();
  ~ReachedServers();
  ReachedServers(const ReachedServers&) = delete;
  ReachedServers& operator=(const ReachedServers&) = delete;

  // Those since the last call. Any thread.
  [[nodiscard]] std::vector<Server> Take();
  void Add(Server server);

 private:
  std::mutex mutex_;
  std::vector<Server> servers_;
};

}  // namespace TestSupport

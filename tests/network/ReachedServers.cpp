#include "network/ReachedServers.h"

#include <arpa/inet.h>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <utility>

namespace TestSupport {
namespace {

ReachedServers* g_reached = nullptr;

std::string NumberOf(const sockaddr* address) {
  std::array<char, INET6_ADDRSTRLEN> text{};
  const void* number = &reinterpret_cast<const sockaddr_in*>(address)->sin_addr;
  if (address->sa_family == AF_INET6) number = &reinterpret_cast<const sockaddr_in6*>(address)->sin6_addr;
  return ::inet_ntop(address->sa_family, number, text.data(), text.size());
}

}  // namespace

ReachedServers::ReachedServers() {
  g_reached = this;
}

ReachedServers::~ReachedServers() {
  g_reached = nullptr;
}

std::vector<ReachedServers::Server> ReachedServers::Take() {
  const std::lock_guard lock(mutex_);
  return std::exchange(servers_, {});
}

void ReachedServers::Add(Server server) {
  const std::lock_guard lock(mutex_);
  servers_.push_back(std::move(server));
}

}  // namespace TestSupport

#pragma GCC visibility push(default)

extern "C" int getaddrinfo(const char* name, const char* service, const addrinfo* /*hints*/,
                           addrinfo** /*result*/) {
  if (TestSupport::g_reached != nullptr)
    TestSupport::g_reached->Add({name != nullptr ? name : "", service != nullptr ? service : ""});
  return EAI_NONAME;
}

extern "C" int connect(int socket, const sockaddr* address, socklen_t size) {
  const bool isInternet = address->sa_family == AF_INET || address->sa_family == AF_INET6;
  if (!isInternet) return static_cast<int>(::syscall(SYS_connect, socket, address, size));
  const std::uint16_t port = ntohs(reinterpret_cast<const sockaddr_in*>(address)->sin_port);
  if (TestSupport::g_reached != nullptr)
    TestSupport::g_reached->Add({TestSupport::NumberOf(address), std::to_string(port)});
  errno = ECONNREFUSED;
  return -1;
}

#pragma GCC visibility pop

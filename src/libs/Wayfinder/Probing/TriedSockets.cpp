#include "libs/Wayfinder/Probing/TriedSockets.h"

#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>

namespace Wayfinding {
namespace {

// A number that no other socket ever has, as another has its descriptor once it is closed; 0 for no socket.
std::uint64_t CookieOf(int descriptor) {
  std::uint64_t cookie = 0;
  socklen_t size = sizeof(cookie);
  return ::getsockopt(descriptor, SOL_SOCKET, SO_COOKIE, &cookie, &size) == 0 ? cookie : 0;
}

std::string NumericText(const sockaddr& address) {
  const void* const number =
      address.sa_family == AF_INET6
          ? static_cast<const void*>(&reinterpret_cast<const sockaddr_in6&>(address).sin6_addr)
          : static_cast<const void*>(&reinterpret_cast<const sockaddr_in&>(address).sin_addr);
  std::array<char, INET6_ADDRSTRLEN> text{};
  return ::inet_ntop(address.sa_family, number, text.data(), text.size()) == nullptr ? "" : text.data();
}

}  // namespace

void TriedSockets::Watch(CURL* transfer) {
  curl_easy_setopt(transfer, CURLOPT_OPENSOCKETFUNCTION, Open);
  curl_easy_setopt(transfer, CURLOPT_OPENSOCKETDATA, this);
}

curl_socket_t TriedSockets::Open(void* self, curlsocktype /*purpose*/, curl_sockaddr* address) {
  const int descriptor = ::socket(address->family, address->socktype | SOCK_CLOEXEC, address->protocol);
  if (descriptor < 0) return CURL_SOCKET_BAD;
  try {
    static_cast<TriedSockets*>(self)->tried_.push_back(
        {descriptor, CookieOf(descriptor), NumericText(address->addr)});
  } catch (...) {
    ::close(descriptor);
    return CURL_SOCKET_BAD;
  }
  return descriptor;
}

void TriedSockets::NoteConnected() noexcept {
  const auto isOpen = [](const Tried& tried) { return CookieOf(tried.descriptor) == tried.cookie; };
  const auto found = std::find_if(tried_.begin(), tried_.end(), isOpen);
  if (found != tried_.end()) connected_ = static_cast<std::size_t>(found - tried_.begin());
}

std::string TriedSockets::ConnectedAddress() const {
  return connected_ ? tried_[*connected_].address : std::string();
}

}  // namespace Wayfinding

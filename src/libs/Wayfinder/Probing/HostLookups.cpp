#include "libs/Wayfinder/Probing/HostLookups.h"

#include "libs/Files/EventFd.h"
#include "libs/Lifetime/UniqueHandle.h"

#include <netdb.h>
#include <sys/socket.h>

#include <array>
#include <chrono>
#include <system_error>
#include <thread>

namespace Wayfinding {
namespace {

constexpr std::size_t kMostAddresses = 16;

using AddressListPtr = Lifetime::UniqueHandle<addrinfo, ::freeaddrinfo>;

std::string NumericText(const addrinfo& entry) {
  std::array<char, NI_MAXHOST> text{};
  const int failed = ::getnameinfo(entry.ai_addr, entry.ai_addrlen, text.data(),
                                   static_cast<socklen_t>(text.size()), nullptr, 0, NI_NUMERICHOST);
  return failed != 0 ? std::string() : std::string(text.data());
}

}  // namespace

// Outlives HostLookups for as long as a lookup hangs.
struct HostLookups::Shared {
  [[nodiscard]] std::vector<std::string> Find(const std::string& host) const noexcept {
    try {
      return resolver(host);
    } catch (...) {
      return {};
    }
  }

  Resolver resolver;
  Files::EventFd ended;
};

bool HasEnded(const HostLookup& lookup) {
  return lookup.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
}

HostLookups::HostLookups(Resolver resolver) : shared_(std::make_shared<Shared>()) {
  shared_->resolver = std::move(resolver);
}

HostLookups::~HostLookups() = default;

int HostLookups::Descriptor() const {
  return shared_->ended.Descriptor();
}

void HostLookups::ClearEnded() {
  shared_->ended.Clear();
  std::erase_if(running_, [](const Running& running) { return HasEnded(running.lookup); });
}

void HostLookups::TakeNewNetwork() {
  for (Running& running : running_) running.isOfThisNetwork = false;
}

std::optional<HostLookup> HostLookups::Start(const std::string& host, const std::string& store) {
  std::size_t held = 0;
  for (const Running& running : running_) {
    if (running.isOfThisNetwork && running.host == host) return running.lookup;
    if (running.store == store) ++held;
  }
  // Taken one after the other by stores whose names all hang, such shares are enough for 17 of them.
  constexpr std::size_t kPart = 4;
  if (kPart * held >= kMostThreads - running_.size()) return std::nullopt;
  std::packaged_task<std::vector<std::string>()> work(
      [shared = shared_, host] { return shared->Find(host); });
  const HostLookup lookup = work.get_future().share();
  try {
    std::thread([shared = shared_, work = std::move(work)]() mutable {
      work();
      shared->ended.Raise();
    }).detach();
  } catch (const std::system_error&) {
    return std::nullopt;
  }
  running_.push_back({.host = host, .store = store, .lookup = lookup});
  return lookup;
}

std::vector<std::string> ResolveWithSystem(const std::string& host) {
  addrinfo hints{};
  hints.ai_socktype = SOCK_STREAM;
  addrinfo* found = nullptr;
  if (::getaddrinfo(host.c_str(), nullptr, &hints, &found) != 0) return {};
  const AddressListPtr list(found);
  std::vector<std::string> addresses;
  for (const addrinfo* entry = found; entry != nullptr && addresses.size() < kMostAddresses;
       entry = entry->ai_next) {
    std::string text = NumericText(*entry);
    const bool isOfOneLinkAlone = text.find('%') != std::string::npos;  // which libcurl takes for no address
    if (!text.empty() && !isOfOneLinkAlone) addresses.push_back(std::move(text));
  }
  return addresses;
}

}  // namespace Wayfinding

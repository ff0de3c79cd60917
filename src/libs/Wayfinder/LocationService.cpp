#include "libs/Wayfinder/LocationService.h"

#include "libs/Wayfinder/LinkKind.h"
#include "libs/Wayfinder/NetworkState.h"
#include "libs/Wayfinder/Wayfinder.h"

#include <poll.h>
#include <signal.h>

#include <chrono>
#include <exception>
#include <system_error>

namespace Wayfinding {
namespace {

// Signals are the main thread's, and a peer that hangs up is an error of the write.
class BlockedSignals {
 public:
  BlockedSignals() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before_);
  }
  ~BlockedSignals() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
  BlockedSignals(const BlockedSignals&) = delete;
  BlockedSignals& operator=(const BlockedSignals&) = delete;

 private:
  sigset_t before_{};
};

}  // namespace

LocationService::LocationService(LocationParts parts) : parts_(std::move(parts)) {}

LocationService::~LocationService() {
  orders_.stop = true;
  wake_.Raise();
  if (thread_.joinable()) thread_.join();
}

void LocationService::SetStores(const PropertyList::Array& stores) {
  std::vector<StoreBeacons> list = ReadStoreList(stores);
  const bool hasStores = !list.empty();
  const bool isNew = locations_.Replace(std::move(list));
  if (hasStores) StartThread();  // with the same list again, too: it may not have been possible before
  if (isNew) wake_.Raise();
}

NetworkLocation LocationService::LocationOf(const std::string& storeURL) {
  const std::optional<StoreLocations::Answer> answer = locations_.Find(storeURL, parts_.now());
  if (!answer) {
    const std::optional<NetworkState> network = ReadNetworkWithoutRoutes();
    return !network || network->IsUsable() ? NetworkLocation::Outside : NetworkLocation::None;
  }
  if (answer->isOld && !orders_.refresh.exchange(true)) wake_.Raise();
  return answer->location;
}

std::uint32_t LocationService::Flags() const {
  return ReachabilityFlags(outsideTunnel_);
}

void LocationService::StartThread() {
  const std::lock_guard lock(threadMutex_);
  if (thread_.joinable()) return;
  const BlockedSignals inherited;
  try {
    thread_ = std::thread([this] { RunThread(); });
  } catch (const std::system_error& error) {
    parts_.log(std::string("no location is decided: ") + error.what());
  }
}

void LocationService::RunThread() {
  while (!orders_.stop) {
    try {
      LocationLoop(parts_, locations_, orders_, wake_, outsideTunnel_).Run();
    } catch (const std::exception& exception) {
      parts_.log(std::string("deciding failed and begins anew: ") + exception.what());
      WaitAfterFailure();
    }
  }
}

void LocationService::WaitAfterFailure() const {
  constexpr std::chrono::milliseconds kPause = std::chrono::seconds(3);
  wake_.Clear();
  if (orders_.stop) return;  // looked at after the event is cleared, or the order could be missed
  pollfd event{wake_.Descriptor(), POLLIN, 0};
  ::poll(&event, 1, static_cast<int>(kPause.count()));
}

std::uint32_t ReachabilityFlags(int tunnelLink) {
  const std::optional<NetworkState> network = ReadNetworkWithoutRoutes();
  if (!network || (!network->IsUsable() && !network->outside)) return 0;
  if (!network->outside) return Wayfinder::kReachable | Wayfinder::kIsDirect;
  const Route& route = *network->outside;
  const bool tunnel =
      SenseOfLink(route.link.kind, route.link.arpType) == TunnelSense::Yes || route.link.index == tunnelLink;
  return Wayfinder::kReachable | (tunnel ? Wayfinder::kTransientConnection : 0) |
         (route.isLocal ? Wayfinder::kIsLocalAddress : 0) | (route.hasGateway ? 0 : Wayfinder::kIsDirect);
}

}  // namespace Wayfinding

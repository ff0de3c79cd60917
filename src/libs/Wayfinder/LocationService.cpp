#include "libs/Wayfinder/LocationService.h"

#include "libs/Files/EventFd.h"
#include "libs/Wayfinder/Network/LinkKind.h"
#include "libs/Wayfinder/Network/NetworkState.h"
#include "libs/Wayfinder/StoreLocations.h"
#include "libs/Wayfinder/Wayfinder.h"

#include <poll.h>
#include <signal.h>

#include <atomic>
#include <exception>
#include <optional>
#include <system_error>
#include <utility>

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

// What the thread works on, for as long as it does.
struct LocationService::Shared {
  explicit Shared(LocationParts given) : parts(std::move(given)), lookups(parts.resolver) {}
  void Run();
  void WaitAfterFailure() const;

  const LocationParts parts;
  HostLookups lookups;  // the thread's
  StoreLocations locations;
  LocationOrders orders;
  EventFd wake;
  std::atomic<int> outsideTunnel = 0;  // the thread's word for the link to the outside
};

LocationService::LocationService(LocationParts parts) : shared_(std::make_shared<Shared>(std::move(parts))) {}

LocationService::~LocationService() {
  shared_->orders.stop = true;
  shared_->wake.Raise();
  if (!thread_.joinable()) return;
  if (threadEnd_.wait_for(kTimeToEnd) == std::future_status::ready) {
    thread_.join();
  } else {
    thread_.detach();
  }
}

void LocationService::SetStores(const PropertyList::SharedDictionaries& stores) {
  std::vector<StoreBeacons> list = ReadStoreList(stores);
  const bool hasStores = !list.empty();
  const bool isNew = shared_->locations.Replace(std::move(list));
  if (hasStores) StartThread();  // with the same list again, too: it may not have been possible before
  if (isNew) shared_->wake.Raise();
}

LocationDecision LocationService::DecisionOf(const std::string& storeURL) {
  const std::optional<StoreLocations::Answer> answer =
      shared_->locations.Find(storeURL, shared_->parts.now());
  if (!answer) {
    const std::optional<NetworkState> network = ReadNetworkWithoutRoutes();
    return !network || network->IsUsable()
               ? LocationDecision{NetworkLocation::Outside, "outside, no store has this address"}
               : LocationDecision{NetworkLocation::None,
                                  "none, no usable network, no store has this address"};
  }
  if (answer->isOld && !shared_->orders.refresh.exchange(true)) shared_->wake.Raise();
  return answer->decision;
}

std::uint32_t LocationService::Flags() const {
  return ReachabilityFlags(shared_->outsideTunnel);
}

void LocationService::StartThread() {
  const std::lock_guard lock(threadMutex_);
  if (thread_.joinable()) return;
  const BlockedSignals inherited;
  std::packaged_task<void()> work([shared = shared_] { shared->Run(); });
  threadEnd_ = work.get_future();
  try {
    thread_ = std::thread(std::move(work));
  } catch (const std::system_error& error) {
    shared_->parts.log(std::string("no location is decided: ") + error.what());
  }
}

void LocationService::Shared::Run() {
  while (!orders.stop) {
    try {
      LocationLoop(parts, lookups, locations, orders, wake, outsideTunnel).Run();
    } catch (const std::exception& exception) {
      parts.log(std::string("deciding failed and begins anew: ") + exception.what());
      WaitAfterFailure();
    }
  }
}

void LocationService::Shared::WaitAfterFailure() const {
  wake.Clear();
  if (orders.stop) return;  // looked at after the event is cleared, or the order could be missed
  pollfd event{wake.Descriptor(), POLLIN, 0};
  ::poll(&event, 1, static_cast<int>(parts.pauseAfterFailure.count()));
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

#include "libs/Wayfinder/LocationService.h"

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

using Wording::Worded;
namespace {

// Signals are the main thread's, and a peer that hangs up is an error of the write. Lookups inherit this.
void BlockSignals() {
  sigset_t all;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, nullptr);
}

void WaitAfterFailure(const LocationBoard& board) {
  board.wake.Clear();
  if (board.stop) return;  // looked at after the event is cleared, or the order could be missed
  pollfd event{board.wake.Descriptor(), POLLIN, 0};
  ::poll(&event, 1, static_cast<int>(board.parts.pauseAfterFailure.count()));
}

void Work(LocationBoard& board) {
  BlockSignals();
  while (!board.stop) {
    try {
      LocationLoop(board).Run();
    } catch (const std::exception& exception) {
      board.parts.log(std::string("deciding failed and begins anew: ") + exception.what());
      WaitAfterFailure(board);
    }
  }
}

}  // namespace

LocationService::LocationService(LocationParts parts)
    : board_(std::make_shared<LocationBoard>(std::move(parts))) {}

LocationService::~LocationService() {
  board_->stop = true;
  board_->wake.Raise();
  if (!thread_.joinable()) return;
  if (threadEnd_.wait_for(kTimeToEnd) == std::future_status::ready) {
    thread_.join();
  } else {
    thread_.detach();
  }
}

void LocationService::SetStores(const PropertyList::SharedDictionaries& stores) {
  const std::map<std::string, StoreBeacons> list = ReadStoreList(stores);
  const bool isNew = board_->locations.Replace(list);
  if (!list.empty()) StartThread();  // with the same list again, too: it may not have been possible before
  if (isNew) board_->wake.Raise();
}

LocationDecision LocationService::DecisionOf(const std::string& storeURL) {
  const std::optional<StoreLocations::Answer> answer = board_->locations.Find(storeURL, board_->parts.now());
  if (!answer) {
    const std::optional<NetworkState> network = ReadNetworkWithoutRoutes();
    return !network || network->IsUsable()
               ? LocationDecision{kOutside, Worded("outside, no store has this address")}
               : LocationDecision{kNone, Worded("none, no usable network, no store has this address")};
  }
  if (answer->isOld && !board_->refresh.exchange(true)) board_->wake.Raise();
  return answer->decision;
}

std::uint32_t LocationService::Flags() const {
  const std::optional<NetworkState> network = ReadNetworkWithoutRoutes();
  if (!network || (!network->IsUsable() && !network->outside)) return 0;
  if (!network->outside) return Wayfinder::kReachable | Wayfinder::kIsDirect;
  const Route& route = *network->outside;
  const bool tunnel = SenseOfLink(route.link.kind, route.link.arpType) == TunnelSense::Yes ||
                      route.link.index == board_->outsideTunnel;
  return Wayfinder::kReachable | (tunnel ? Wayfinder::kTransientConnection : 0) |
         (route.isLocal ? Wayfinder::kIsLocalAddress : 0) | (route.hasGateway ? 0 : Wayfinder::kIsDirect);
}

void LocationService::StartThread() {
  const ThreadSafety::MutexLock lock(threadMutex_);
  if (thread_.joinable()) return;
  std::packaged_task<void()> work([board = board_] { Work(*board); });
  threadEnd_ = work.get_future();
  try {
    thread_ = std::thread(std::move(work));
  } catch (const std::system_error& error) {
    board_->parts.log(std::string("no location is decided: ") + error.what());
  }
}

}  // namespace Wayfinding

#pragma once

#include "libs/Files/EventFd.h"
#include "libs/Wayfinder/Deciding/Repetition.h"
#include "libs/Wayfinder/Network/NetworkState.h"
#include "libs/Wayfinder/Probing/HostLookups.h"
#include "libs/Wayfinder/StoreLocations.h"

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>

namespace Wayfinding {

class LocationRound;
class NetworkMonitor;

// What the location service is made of besides the network itself. All are called on the service's thread,
// except `now`, which any thread calls.
struct LocationParts {
  std::function<std::chrono::steady_clock::time_point()> now;
  std::function<double()> chance;  // evenly spread over [0, 1)
  HostLookups::Resolver resolver;
  std::function<void(const std::string& message)> log;
  std::function<void(const std::string& storeURL, NetworkLocation location)> changed;
  std::chrono::milliseconds pauseAfterFailure;

  // The system's clock, chance and name lookup; messages and changes are dropped.
  static LocationParts Defaults();
};

// What the service's callers and its thread share. Whoever sets an order raises the wake event after it.
struct LocationBoard {
  explicit LocationBoard(LocationParts given) : parts(std::move(given)), lookups(parts.resolver) {}

  const LocationParts parts;
  StoreLocations locations;
  std::atomic<bool> stop = false;
  std::atomic<bool> refresh = false;
  Files::EventFd wake;
  std::atomic<int> outsideTunnel = 0;  // the index of the link to the outside where that is a tunnel
  // The thread's own; here, so that those that hang are counted when its work begins anew.
  HostLookups lookups;
};

// The work of the service's thread: watches the network, asks beacons, decides. Waits without a time when
// nothing is due. Lives and is used on that thread.
class LocationLoop {
 public:
  using TimePoint = std::chrono::steady_clock::time_point;

  static constexpr std::chrono::seconds kGatheringTime{1};  // events of the network come in bursts
  static constexpr std::chrono::seconds kRoundTime{10};     // from the change to the last answer that counts

  explicit LocationLoop(LocationBoard& board);
  ~LocationLoop();
  LocationLoop(const LocationLoop&) = delete;
  LocationLoop& operator=(const LocationLoop&) = delete;

  // Returns soon after a stop was ordered.
  void Run();

 private:
  void TakeOrders();
  void TakeStores(StoreLocations::StoreList list);
  void OpenMonitor();
  void TakeNetworkEvents();
  void LookAtNetwork();
  void ForgetDecisions();
  void DropRound();
  void AskWhatIsDue();
  void MakeRound();
  void BeginAsking(TimePoint since);
  void AdvanceRound();
  void EndRound();
  void GiveOutChanges();
  void Wait();
  [[nodiscard]] bool IsNetworkKnown() const { return monitor_ != nullptr && network_; }
  [[nodiscard]] bool IsAsking() const;
  [[nodiscard]] std::chrono::milliseconds TimeToNextDue() const;

  LocationBoard& board_;
  const LocationParts& parts_;

  std::unique_ptr<NetworkMonitor> monitor_;
  std::optional<NetworkState> network_;
  std::optional<TimePoint> gatheringSince_;  // the first event since the network was looked at
  // And perhaps came back as another one that looks the same. Nothing is asked before the look.
  bool networkWasLost_ = false;
  StoreLocations::StoreList list_;
  std::unique_ptr<LocationRound> round_;  // kept for its repetition and for further stores
  bool asksAll_ = false;
  TimePoint deadline_;  // when it is cut off
  Repetition repetition_;
  std::set<StorePtr> unanswered_;  // stores without an answer in the last round
};

}  // namespace Wayfinding

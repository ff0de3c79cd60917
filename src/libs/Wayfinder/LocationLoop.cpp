#include "libs/Wayfinder/LocationLoop.h"

#include "libs/Text/LogText.h"
#include "libs/Wayfinder/Deciding/LocationRound.h"
#include "libs/Wayfinder/Network/NetworkMonitor.h"

#include <poll.h>

#include <algorithm>
#include <array>
#include <random>
#include <utility>

namespace Wayfinding {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kForEver = std::chrono::hours(24 * 20);  // as long as a wait can be

std::string Seconds(milliseconds time) {
  const auto tenths = time.count() / 100;
  return std::to_string(tenths / 10) + "." + std::to_string(tenths % 10) + " s";
}

// Whether the events took something away from the network, and not from some other link of the machine.
bool WasLost(const std::optional<NetworkState>& network, const NetworkEvents& events) {
  if (events.mayHaveLostAny) return true;
  if (!network) return false;
  const auto lost = [&events](const NetworkLink& link) {
    return std::find(events.linksThatLost.begin(), events.linksThatLost.end(), link.index) !=
           events.linksThatLost.end();
  };
  return std::any_of(network->links.begin(), network->links.end(), lost) ||
         (network->outside && lost(network->outside->link));
}

}  // namespace

LocationParts LocationParts::Defaults() {
  auto engine = std::make_shared<std::mt19937>(std::random_device{}());
  return {.now = std::chrono::steady_clock::now,
          .chance = [engine] { return std::uniform_real_distribution<>(0, 1)(*engine); },
          .resolver = ResolveWithSystem,
          .log = [](const std::string& /*message*/) {},
          .changed = [](const std::string& /*storeURL*/, NetworkLocation /*location*/) {},
          .pauseAfterFailure = std::chrono::seconds(3)};
}

LocationLoop::LocationLoop(LocationBoard& board) : board_(board), parts_(board.parts) {}
LocationLoop::~LocationLoop() = default;

void LocationLoop::Run() {
  for (;;) {
    board_.wake.Clear();
    if (board_.stop) return;  // looked at after the event is cleared, or the order could be missed
    TakeOrders();
    TakeNetworkEvents();
    if (gatheringSince_ && parts_.now() >= *gatheringSince_ + kGatheringTime) LookAtNetwork();
    AskWhatIsDue();
    AdvanceRound();
    GiveOutChanges();
    Wait();
  }
}

void LocationLoop::TakeOrders() {
  StoreLocations::StoreList list = board_.locations.Current();
  if (list != list_) TakeStores(std::move(list));
  const bool isBeingDone = asksAll_ && IsAsking();
  if (board_.refresh.exchange(false) && !isBeingDone) round_.reset();
}

void LocationLoop::TakeStores(StoreLocations::StoreList list) {
  list_ = std::move(list);
  if (list_->empty()) {
    DropRound();
    monitor_.reset();
    gatheringSince_.reset();
    networkWasLost_ = false;
    board_.outsideTunnel = 0;
  }
  if (!IsNetworkKnown()) round_.reset();
  if (round_ == nullptr) return;
  const TimePoint since = parts_.now();
  asksAll_ = false;
  round_->TakeList(*list_);
  round_->Ask();
  BeginAsking(since);
}

void LocationLoop::OpenMonitor() {
  monitor_ = NetworkMonitor::Open();
  network_ = ReadNetworkState();
  if (monitor_ == nullptr || !network_) {
    parts_.log("the network cannot be watched: its changes are not seen");
  } else {
    parts_.log("network: " + network_->Description());
  }
}

void LocationLoop::TakeNetworkEvents() {
  if (monitor_ == nullptr) return;
  const NetworkEvents events = monitor_->Take();
  if (!events.any) return;
  if (!gatheringSince_) gatheringSince_ = parts_.now();
  if (networkWasLost_ || !WasLost(network_, events)) return;
  // The next network is asked when the events are gathered; until then the lost one's answers are wrong.
  networkWasLost_ = true;
  ForgetDecisions();
}

void LocationLoop::DropRound() {
  round_.reset();
  repetition_.Forget();
  unanswered_.clear();
}

void LocationLoop::ForgetDecisions() {
  DropRound();
  board_.lookups.TakeNewNetwork();
  board_.locations.ForgetDecisions();
}

void LocationLoop::LookAtNetwork() {
  const TimePoint since = *std::exchange(gatheringSince_, std::nullopt);
  std::optional<NetworkState> network = ReadNetworkState();
  const bool wasLost = std::exchange(networkWasLost_, false);
  if (network == network_ && !wasLost) return;
  network_ = std::move(network);
  parts_.log("network changed: " + (network_ ? network_->Description() : "it cannot be read"));
  ForgetDecisions();
  MakeRound();
  BeginAsking(since);
}

void LocationLoop::AskWhatIsDue() {
  if (list_->empty() || networkWasLost_ || IsAsking()) return;
  const TimePoint since = parts_.now();
  if (round_ != nullptr && !repetition_.Take(since)) return;
  if (round_ != nullptr && IsNetworkKnown()) {
    asksAll_ = false;
    round_->Repeat();
  } else {
    MakeRound();
  }
  BeginAsking(since);
}

void LocationLoop::MakeRound() {
  // A network that cannot be watched or read is at least looked at anew for each round.
  if (!IsNetworkKnown()) OpenMonitor();
  round_ = std::make_unique<LocationRound>(
      network_, board_.lookups, [this](const StorePtr& store, const LocationDecision& decision) {
        const Wording::Message reason = decision.reason.WithForeign(util::LogText::Line);
        board_.locations.Decide(store, {decision.location, reason}, parts_.now());
        parts_.log("store " + util::LogText::Address(store->url) + ": " + reason.English());
      });
  asksAll_ = true;
  repetition_.Cancel();
  round_->TakeList(*list_);
  round_->Ask();
}

void LocationLoop::BeginAsking(TimePoint since) {
  deadline_ = since + kRoundTime;
  const bool byTunnel = network_ && network_->outside && round_->IsTunnel(network_->outside->link);
  board_.outsideTunnel = byTunnel ? network_->outside->link.index : 0;
}

bool LocationLoop::IsAsking() const {
  return round_ != nullptr && round_->IsAsking();
}

void LocationLoop::AdvanceRound() {
  if (!IsAsking()) return;
  round_->Advance();
  if (round_->IsAsking() && parts_.now() >= deadline_) round_->CutOff();
  if (!round_->IsAsking()) EndRound();
}

void LocationLoop::EndRound() {
  const std::set<StorePtr> before = std::exchange(unanswered_, round_->Unanswered());
  const bool withNewStore =
      !std::includes(before.begin(), before.end(), unanswered_.begin(), unanswered_.end());
  if (unanswered_.empty() || withNewStore) repetition_.Forget();
  if (unanswered_.empty()) return;
  const milliseconds delay = repetition_.Plan(parts_.now(), parts_.chance());
  parts_.log("stores without an answer: " + std::to_string(unanswered_.size()) + ", repetition " +
             std::to_string(repetition_.Attempts()) + " in " + Seconds(delay));
}

void LocationLoop::GiveOutChanges() {
  for (const auto& [url, location] : board_.locations.TakeChanges()) parts_.changed(url, location);
}

milliseconds LocationLoop::TimeToNextDue() const {
  TimePoint due = TimePoint::max();
  if (gatheringSince_) due = *gatheringSince_ + kGatheringTime;
  if (IsAsking()) {
    due = std::min(due, deadline_);
  } else if (repetition_.Due()) {
    due = std::min(due, *repetition_.Due());
  }
  if (due == TimePoint::max()) return kForEver;
  const auto left = std::chrono::ceil<milliseconds>(due - parts_.now());
  return std::clamp(left, milliseconds(0), kForEver);
}

void LocationLoop::Wait() {
  const milliseconds limit = TimeToNextDue();
  const std::array<int, 2> descriptors = {board_.wake.Descriptor(),
                                          monitor_ == nullptr ? -1 : monitor_->Descriptor()};
  if (IsAsking()) {
    round_->Wait(std::span(descriptors).first(monitor_ == nullptr ? 1 : 2), limit);
    return;
  }
  // A negative descriptor is passed over.
  std::array<pollfd, 2> watched = {pollfd{descriptors[0], POLLIN, 0}, pollfd{descriptors[1], POLLIN, 0}};
  ::poll(watched.data(), watched.size(), limit == kForEver ? -1 : static_cast<int>(limit.count()));
}

}  // namespace Wayfinding

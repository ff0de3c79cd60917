#pragma once

#include <chrono>
#include <optional>

namespace Wayfinding {

// When to look at the network and when to ask beacons. Only keeps the times: whoever uses it waits until
// NextDue, and does what is due. Nothing is due while nothing happens. One thread.
class RoundSchedule {
 public:
  using TimePoint = std::chrono::steady_clock::time_point;

  static constexpr std::chrono::seconds kGatheringTime{1};
  static constexpr std::chrono::seconds kRoundTime{10};  // from the change to the last answer that counts

  // Events of the network come in bursts: the first of them begins a gathering.
  void TakeNetworkEvent(TimePoint now);
  // True, once, when a gathering is over and the network is to be looked at.
  [[nodiscard]] bool TakeLook(TimePoint now);

  // The network was lost, and a gathering has begun: nothing is asked before the look, which finds a new one.
  void TakeLoss();
  // The network that was looked at last is a new one: a round, to be in by kRoundTime after the first event.
  void TakeNewNetwork(TimePoint now);
  // A new list: a round at once.
  void TakeNewStores(TimePoint now);
  // A list with further stores: a round of these at once. A repetition that was to come keeps its time.
  void TakeFurtherStores(TimePoint now);
  // The answers are old: a round of all stores in place of any other, unless one is running.
  void TakeOldAge(TimePoint now);

  // True, once, when a round is to start, afresh if one is running.
  [[nodiscard]] bool TakeStart(TimePoint now);
  [[nodiscard]] bool IsRunning() const { return running_; }
  // Of which stores the round is that started last.
  enum class Scope { All, Further, WithoutAnswer };
  [[nodiscard]] Scope CurrentScope() const { return scope_; }
  // When the running round is cut off.
  [[nodiscard]] TimePoint Deadline() const { return deadline_; }

  // The running round is over and needs no repetition.
  void TakeEnd();
  // The running round is over, and some stores have no answer: it is repeated for them after 1, 2, 4 ... up
  // to 300 s, each 30 percent more or less by `chance`, evenly spread over [0, 1), so that many machines do
  // not ask at the same time. With one that had an answer before, the delays begin anew. Returns the delay.
  std::chrono::milliseconds TakeFailure(TimePoint now, double chance, bool withNewStore);
  // Nobody to ask: forgets everything.
  void Stop();

  // Repetitions of the round so far.
  [[nodiscard]] unsigned int Attempts() const { return attempts_; }

  // The next time at which something may be due; nothing when nothing is.
  [[nodiscard]] std::optional<TimePoint> NextDue() const;

 private:
  struct Start {
    TimePoint when;
    Scope scope = Scope::All;
    TimePoint deadline;
  };

  std::optional<TimePoint> gatheringSince_;
  TimePoint lastEvent_;  // the first of the last gathering
  std::optional<Start> start_;
  std::optional<TimePoint> repetition_;
  bool running_ = false;
  Scope scope_ = Scope::All;
  TimePoint deadline_;
  unsigned int attempts_ = 0;
};

}  // namespace Wayfinding

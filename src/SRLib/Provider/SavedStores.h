#pragma once

#include "SRLib/SRStore.h"

#include <atomic>
#include <chrono>
#include <functional>
#include <optional>
#include <string>

namespace Config {
class Configurator;
}

namespace ServiceRecords {

// The saved list behind the provider's. Remembers that it could not be read or written, says so once in the
// system log, and asks for another try after 1, 2, 4 ... 300 s until one succeeds. No lock of its own; the
// caller holds the provider's.
class SavedStores {
 public:
  enum class State {
    Good,
    Unreadable,  // what is saved is not known, so it must not be replaced
    Unsaved      // the saved list is older than the provider's
  };
  // Starts a timer, in place of the one that was started before.
  using StartTimer = std::function<void(std::chrono::seconds)>;

  // The user's configuration, which must outlive this.
  explicit SavedStores(const Config::Configurator& configuration) : configuration_(configuration) {}

  // Any thread, without the lock too.
  [[nodiscard]] State CurrentState() const { return state_; }

  // `startTimer` is called when a try is wanted, at once when one is wanted already. When the time is over,
  // TakeRetry begins it.
  void RetryWith(StartTimer startTimer);
  // Whether a try is still wanted, for which the next time is counted from now.
  [[nodiscard]] bool TakeRetry();

  // What is saved; nothing when it cannot be read, and why.
  struct Reading {
    std::optional<StoreMap> stores;
    std::string problem;
  };
  // Takes as long as the disk does. Any thread, with or without the lock.
  [[nodiscard]] Reading Read() const;
  void TakeReading(const Reading& reading);
  // Not const: a missing beacon list is filled before it is saved. What is thrown counts as a failure.
  void Save(StoreMap& stores);

 private:
  // Why the stores were not saved; nothing when they were.
  [[nodiscard]] std::optional<std::string> TrySave(StoreMap& stores) const;
  void TakeResult(State state, const std::string& problem);
  void WaitForRetry();

  const Config::Configurator& configuration_;
  std::atomic<State> state_ = State::Good;
  unsigned int attempts_ = 0;
  std::chrono::seconds delay_{};
  StartTimer startTimer_;
};

}  // namespace ServiceRecords

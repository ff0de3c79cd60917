#pragma once

#include "libs/Wayfinder/Probing/HostLookups.h"

#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace TestSupport {

// A name lookup that does not come back before it is released, at the latest when this object goes.
class HangingResolver {
 public:
  HangingResolver() = default;
  ~HangingResolver() { Release(); }
  HangingResolver(const HangingResolver&) = delete;
  HangingResolver& operator=(const HangingResolver&) = delete;

  // May outlive this object.
  [[nodiscard]] Wayfinding::HostLookups::Resolver Resolver() const {
    return [state = state_](const std::string& host) {
      std::unique_lock lock(state->mutex);
      state->asked.push_back(host);
      state->released.wait(lock, [&state] { return state->isReleased; });
      return std::vector<std::string>{"127.0.0.1"};
    };
  }
  // The hosts so far.
  [[nodiscard]] std::vector<std::string> Asked() const {
    const std::lock_guard lock(state_->mutex);
    return state_->asked;
  }
  void Release() {
    const std::lock_guard lock(state_->mutex);
    state_->isReleased = true;
    state_->released.notify_all();
  }

 private:
  struct State {
    std::mutex mutex;
    std::condition_variable released;
    bool isReleased = false;
    std::vector<std::string> asked;
  };
  std::shared_ptr<State> state_ = std::make_shared<State>();
};

}  // namespace TestSupport

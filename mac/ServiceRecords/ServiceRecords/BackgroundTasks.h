#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>

// One new thread for each piece of work. Any thread may start one.
class BackgroundTasks {
 public:
  // Runs `work` on a thread of its own; what it throws is logged. Throws std::system_error when there can be
  // no further thread.
  void Start(std::function<void()> work);

  // Waits until all work has ended, but no longer than `limit`. True when all has ended.
  [[nodiscard]] bool WaitForAll(std::chrono::milliseconds limit);

 private:
  void Finished();

  std::mutex mutex_;
  std::condition_variable changed_;
  int running_ = 0;
};

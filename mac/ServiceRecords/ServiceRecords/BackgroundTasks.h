#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <list>
#include <mutex>
#include <thread>

// One new thread for each piece of work. Any thread may start one.
class BackgroundTasks {
 public:
  BackgroundTasks() = default;
  // Waits until all work has ended.
  ~BackgroundTasks();
  BackgroundTasks(const BackgroundTasks&) = delete;
  BackgroundTasks& operator=(const BackgroundTasks&) = delete;

  // Runs `work` on a thread of its own; what it throws is logged. Throws std::system_error when there can be
  // no further thread.
  void Start(std::function<void()> work);

  // Waits until all work has ended, but no longer than `limit`. True when all has ended.
  [[nodiscard]] bool WaitForAll(std::chrono::milliseconds limit);

 private:
  using Threads = std::list<std::thread>;

  void Finished(Threads::iterator thread);
  void JoinEnded();

  std::mutex mutex_;
  std::condition_variable changed_;
  Threads running_;
  Threads ended_;  // but for their last instructions
};

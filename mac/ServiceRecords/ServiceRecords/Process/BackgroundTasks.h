#pragma once

#include "libs/ThreadSafety/ThreadSafety.h"

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <list>
#include <thread>

namespace Agent {

// Pieces of work, such as files to be handled, each on a new thread of its own. Only some are worked on at a
// time; one that waits for the user is not counted and makes room for the next. What finds no room waits in
// the order of arrival. Any thread may start one.
class BackgroundTasks {
 public:
  static constexpr std::size_t kWorkedOnAtATime = 8;
  static constexpr std::size_t kThreads = 64;

  BackgroundTasks() = default;
  // Drops what has not begun and waits until the rest has ended.
  ~BackgroundTasks();
  BackgroundTasks(const BackgroundTasks&) = delete;
  BackgroundTasks& operator=(const BackgroundTasks&) = delete;

  // Runs `work` on a thread of its own, now or when there is room; what it throws is logged. After Finish,
  // and where there can be no thread at all, it is dropped.
  void Start(std::function<void()> work);

  // Drops what has not begun, and waits until the rest has ended, but no longer than `limit`. True when all
  // has ended.
  [[nodiscard]] bool Finish(std::chrono::milliseconds limit);

  // For as long as it lives, the work of this thread waits for the user. On other threads it does nothing.
  class UserWait {
   public:
    // Whether the work goes on as soon as there is room, or at once: because it holds a lock that others,
    // which take up the room, are waiting for.
    enum class End { InTurn, AtOnce };

    explicit UserWait(End end);
    ~UserWait();
    UserWait(const UserWait&) = delete;
    UserWait& operator=(const UserWait&) = delete;

   private:
    BackgroundTasks* const tasks_;
    const End end_;
  };

 private:
  using Threads = std::list<std::thread>;
  using Work = std::function<void()>;

  [[nodiscard]] bool HasRoom() const SR_REQUIRES(mutex_) { return worked_ < kWorkedOnAtATime; }
  void StartWaiting() SR_REQUIRES(mutex_);
  [[nodiscard]] bool StartThread(const Work& work) SR_REQUIRES(mutex_);
  void Run(Threads::iterator thread, Work work);
  void LeaveRoom() SR_REQUIRES(mutex_);
  void AwaitTurn();
  void JoinEnded() SR_REQUIRES(mutex_);
  std::deque<Work> Drop();

  ThreadSafety::Mutex mutex_;
  std::condition_variable_any changed_;
  std::deque<Work> waiting_ SR_GUARDED_BY(mutex_);
  bool finishing_ SR_GUARDED_BY(mutex_) = false;
  Threads running_ SR_GUARDED_BY(mutex_);
  Threads ended_ SR_GUARDED_BY(mutex_);           // but for their last instructions
  std::size_t worked_ SR_GUARDED_BY(mutex_) = 0;  // of the running ones
  // Whoever comes back from the user draws a number; the one whose number is next goes first.
  std::uint64_t drawn_ SR_GUARDED_BY(mutex_) = 0;
  std::uint64_t next_ SR_GUARDED_BY(mutex_) = 0;
};

}  // namespace Agent

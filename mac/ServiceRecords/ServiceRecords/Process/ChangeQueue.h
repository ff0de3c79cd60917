#pragma once

#include "libs/ThreadSafety/ThreadSafety.h"

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <thread>

namespace Agent {

// What changes the list of stores, done one after the other, in the order of the calls, on one thread of its
// own: a change waits for the disk, for whoever else changes the list, and for the user's answers. The thread
// is there from the beginning, so that no change is lost for want of one. Any thread may add a change.
class ChangeQueue {
 public:
  using Change = std::function<void()>;

  // `isOver` is asked before each change, on the queue's thread: once it answers true, no change begins any
  // more but `last`, which is made on that thread in any case. Throws std::system_error when there can be no
  // thread.
  ChangeQueue(std::function<bool()> isOver, Change last);
  // Drops what has not begun and waits until the rest has ended.
  ~ChangeQueue();
  ChangeQueue(const ChangeQueue&) = delete;
  ChangeQueue& operator=(const ChangeQueue&) = delete;

  // What the change throws is logged, and what it holds ends with it, before the next one begins. After Close
  // it is dropped.
  void Add(Change change);

  // From now on no change begins but the last one.
  void Close();
  // Waits until the change that was begun has ended, and the last one, but no longer than `limit`, and only
  // then drops the others, which came later. After Close, or once it is over. True when it has ended.
  [[nodiscard]] bool Finish(std::chrono::milliseconds limit);

 private:
  void Work();
  // The next change; nothing after Close, or when it is over.
  [[nodiscard]] Change AwaitNext();
  void Drop();

  const std::function<bool()> isOver_;
  const Change last_;
  ThreadSafety::Mutex mutex_;
  std::condition_variable_any changed_;
  std::deque<Change> waiting_ SR_GUARDED_BY(mutex_);
  bool closed_ SR_GUARDED_BY(mutex_) = false;
  bool ended_ SR_GUARDED_BY(mutex_) = false;
  std::thread thread_;
};

}  // namespace Agent

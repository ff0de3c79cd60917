#include "Process/ChangeQueue.h"

#include "Process/RunAndLogFailure.h"

#include <utility>

namespace Agent {

namespace {

constexpr char kWork[] = "changing the list of stores";

}  // namespace

ChangeQueue::ChangeQueue(std::function<bool()> isOver, Change last)
    : isOver_(std::move(isOver)), last_(std::move(last)), thread_([this] { Work(); }) {}

ChangeQueue::~ChangeQueue() {
  Close();
  if (thread_.joinable()) thread_.join();
}

void ChangeQueue::Add(Change change) {
  const ThreadSafety::MutexLock lock(mutex_);
  if (closed_) return;
  waiting_.push_back(std::move(change));
  changed_.notify_all();
}

void ChangeQueue::Close() {
  const ThreadSafety::MutexLock lock(mutex_);
  closed_ = true;
  changed_.notify_all();
}

bool ChangeQueue::Finish(std::chrono::milliseconds limit) {
  {
    const ThreadSafety::MutexLock lock(mutex_);
    if (changed_.wait_for(mutex_, limit, [this]() SR_REQUIRES(mutex_) { return ended_; })) thread_.join();
  }
  Drop();
  return !thread_.joinable();
}

// Without the lock, because what a change holds may have something to say, and in their order.
void ChangeQueue::Drop() {
  std::deque<Change> dropped;
  {
    const ThreadSafety::MutexLock lock(mutex_);
    dropped.swap(waiting_);
  }
  for (Change& change : dropped) change = nullptr;
}

void ChangeQueue::Work() {
  for (Change change = AwaitNext(); change; change = AwaitNext()) {
    RunAndLogFailure(kWork, change);
    change = nullptr;
  }
  RunAndLogFailure(kWork, last_);
  const ThreadSafety::MutexLock lock(mutex_);
  ended_ = true;
  changed_.notify_all();
}

ChangeQueue::Change ChangeQueue::AwaitNext() {
  const ThreadSafety::MutexLock lock(mutex_);
  changed_.wait(mutex_, [this]() SR_REQUIRES(mutex_) { return closed_ || !waiting_.empty(); });
  if (closed_ || isOver_()) return nullptr;
  Change next = std::move(waiting_.front());
  waiting_.pop_front();
  return next;
}

}  // namespace Agent

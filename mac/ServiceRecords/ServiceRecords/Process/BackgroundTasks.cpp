#include "Process/BackgroundTasks.h"

#include "Process/RunAndLogFailure.h"
#include "libs/Trace/SystemLog.h"

#include <string>
#include <system_error>
#include <utility>

namespace Agent {
namespace {

thread_local BackgroundTasks* g_tasksOfThisThread = nullptr;

}  // namespace

BackgroundTasks::~BackgroundTasks() {
  const std::deque<Work> dropped = Drop();
  const ThreadSafety::MutexLock lock(mutex_);
  changed_.wait(mutex_, [this]() SR_REQUIRES(mutex_) { return running_.empty(); });
  JoinEnded();
}

void BackgroundTasks::Start(Work work) {
  const ThreadSafety::MutexLock lock(mutex_);
  if (finishing_) return;
  waiting_.push_back(std::move(work));
  StartWaiting();
}

// Those who come back from the user were there before.
void BackgroundTasks::StartWaiting() {
  while (!waiting_.empty() && HasRoom() && next_ == drawn_ && running_.size() < kThreads) {
    const bool started = StartThread(waiting_.front());
    if (!started && !running_.empty()) return;
    waiting_.pop_front();  // also without a thread, when nobody would start one later
  }
}

bool BackgroundTasks::StartThread(const Work& work) {
  const auto thread = running_.emplace(running_.end());
  try {
    *thread = std::thread([this, thread, own = work]() mutable { Run(thread, std::move(own)); });
  } catch (const std::system_error& error) {
    running_.erase(thread);
    trace::SystemLog::Error(std::string("no thread to handle a file: ") + error.what());
    return false;
  }
  ++worked_;
  return true;
}

void BackgroundTasks::Run(Threads::iterator thread, Work work) {
  g_tasksOfThisThread = this;
  RunAndLogFailure("handling a file", work);
  work = nullptr;  // what it holds ends with it
  const ThreadSafety::MutexLock lock(mutex_);
  JoinEnded();
  ended_.splice(ended_.end(), running_, thread);
  LeaveRoom();
}

void BackgroundTasks::LeaveRoom() {
  --worked_;
  StartWaiting();
  changed_.notify_all();
}

void BackgroundTasks::AwaitTurn() {
  const ThreadSafety::MutexLock lock(mutex_);
  const std::uint64_t number = drawn_++;
  changed_.wait(mutex_, [&]() SR_REQUIRES(mutex_) { return finishing_ || (number == next_ && HasRoom()); });
  ++next_;
  ++worked_;
  StartWaiting();
  changed_.notify_all();
}

// Libraries clean up after a thread at its very end, which must not meet their clean-up at the process's
// exit.
void BackgroundTasks::JoinEnded() {
  for (std::thread& thread : ended_) thread.join();
  ended_.clear();
}

std::deque<BackgroundTasks::Work> BackgroundTasks::Drop() {
  const ThreadSafety::MutexLock lock(mutex_);
  finishing_ = true;
  changed_.notify_all();
  return std::exchange(waiting_, {});
}

bool BackgroundTasks::Finish(std::chrono::milliseconds limit) {
  Drop();
  const ThreadSafety::MutexLock lock(mutex_);
  if (!changed_.wait_for(mutex_, limit, [this]() SR_REQUIRES(mutex_) { return running_.empty(); }))
    return false;
  JoinEnded();
  return true;
}

BackgroundTasks::UserWait::UserWait(End end) : tasks_(g_tasksOfThisThread), end_(end) {
  if (tasks_ == nullptr) return;
  const ThreadSafety::MutexLock lock(tasks_->mutex_);
  tasks_->LeaveRoom();
}

BackgroundTasks::UserWait::~UserWait() {
  if (tasks_ == nullptr) return;
  if (end_ == End::InTurn) {
    tasks_->AwaitTurn();
  } else {
    const ThreadSafety::MutexLock lock(tasks_->mutex_);
    ++tasks_->worked_;
  }
}

}  // namespace Agent

#include "BackgroundTasks.h"

#include "SRLib/SystemLog.h"

#include <exception>
#include <string>
#include <utility>

namespace {

// A failure in one file's handling ends that, not the agent.
void RunAndLogFailure(const std::function<void()>& work) {
  try {
    work();
  } catch (const std::exception& exception) {
    SystemLog::Error(std::string("handling a file failed: ") + exception.what());
  } catch (...) {
    SystemLog::Error("handling a file failed");
  }
}

}  // namespace

BackgroundTasks::~BackgroundTasks() {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [this] { return running_.empty(); });
  JoinEnded();
}

void BackgroundTasks::Start(std::function<void()> work) {
  const std::lock_guard lock(mutex_);
  JoinEnded();
  const auto thread = running_.emplace(running_.end());
  try {
    *thread = std::thread([this, thread, task = std::move(work)] {
      RunAndLogFailure(task);
      Finished(thread);
    });
  } catch (...) {
    running_.erase(thread);
    throw;
  }
}

void BackgroundTasks::Finished(Threads::iterator thread) {
  const std::lock_guard lock(mutex_);
  ended_.splice(ended_.end(), running_, thread);
  changed_.notify_all();
}

// Libraries clean up after a thread at its very end, which must not meet their clean-up at the process's
// exit.
void BackgroundTasks::JoinEnded() {
  for (std::thread& thread : ended_) thread.join();
  ended_.clear();
}

bool BackgroundTasks::WaitForAll(std::chrono::milliseconds limit) {
  std::unique_lock lock(mutex_);
  if (!changed_.wait_for(lock, limit, [this] { return running_.empty(); })) return false;
  JoinEnded();
  return true;
}

#include "BackgroundTasks.h"

#include <thread>

void BackgroundTasks::Start(std::function<void()> work) {
  {
    const std::lock_guard lock(mutex_);
    ++running_;
  }
  try {
    std::thread([this, task = std::move(work)] {
      task();
      Finished();
    }).detach();
  } catch (...) {
    Finished();
    throw;
  }
}

void BackgroundTasks::Finished() {
  const std::lock_guard lock(mutex_);
  --running_;
  changed_.notify_all();
}

bool BackgroundTasks::WaitForAll(std::chrono::milliseconds limit) {
  std::unique_lock lock(mutex_);
  return changed_.wait_for(lock, limit, [this] { return running_ == 0; });
}

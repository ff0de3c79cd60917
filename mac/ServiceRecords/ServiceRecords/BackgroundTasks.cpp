#include "BackgroundTasks.h"

#include "SystemLog.h"

#include <exception>
#include <string>
#include <thread>
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

void BackgroundTasks::Start(std::function<void()> work) {
  {
    const std::lock_guard lock(mutex_);
    ++running_;
  }
  try {
    std::thread([this, task = std::move(work)] {
      RunAndLogFailure(task);
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

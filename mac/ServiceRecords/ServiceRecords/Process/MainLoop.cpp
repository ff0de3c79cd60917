#include "Process/MainLoop.h"

#include "Process/RunAndLogFailure.h"
#include "libs/Termination/TerminationEvent.h"

#include <cstdlib>
#include <system_error>
#include <utility>

namespace Agent {
namespace {

template <class Value>
Value Made(Bus::Result<Value> result, const char* what) {
  if (!result) throw std::system_error(result.Failure().code, std::generic_category(), what);
  return std::move(*result);
}

}  // namespace

MainLoop::MainLoop() : loop_(Made(Bus::EventLoop::Make(), "making the main loop")) {
  const auto runPosted = [this] {
    wakeUp_.Clear();
    RunPosted();
  };
  // Not the loop's own exit, at which every connection closes itself: there may be something left to say.
  const auto terminate = [this] {
    terminating_ = true;
    termination_.reset();
  };
  postedWork_ = Made(loop_.WatchReadable(wakeUp_.Descriptor(), runPosted), "watching for work");
  termination_ =
      Made(loop_.WatchReadable(Termination::Descriptor(), terminate), "watching for the termination");
}

MainLoop& MainLoop::Main() {
  static MainLoop loop;
  return loop;
}

void MainLoop::Post(std::function<void()> work) {
  {
    const ThreadSafety::MutexLock lock(mutex_);
    posted_.push_back(std::move(work));
  }
  wakeUp_.Raise();
}

void MainLoop::PutOff(std::chrono::microseconds time, std::function<void()> work) {
  Post([this, time, work = std::move(work)] {
    putOff_ = work;
    timer_ = Made(loop_.After(time, [this] { Post(std::exchange(putOff_, nullptr)); }), "waiting for a time");
  });
}

bool MainLoop::Attach(Bus::Connection& bus) {
  return bus.Attach(loop_) && bus.EndLoopWhenLost();
}

Bus::EventSource MainLoop::Watch(int descriptor, std::function<void()> handler) {
  Bus::Result<Bus::EventSource> source = loop_.WatchReadable(descriptor, std::move(handler));
  return source ? std::move(*source) : nullptr;
}

int MainLoop::Run() {
  RunUntil([] { return false; });
  return terminating_ || !loop_.HasFailed() ? EXIT_SUCCESS : EXIT_FAILURE;
}

void MainLoop::RunUntil(const std::function<bool()>& done) {
  while (!done() && !terminating_ && loop_.RunOnce()) {
  }
}

bool MainLoop::RunPosted() {
  std::deque<std::function<void()>> work;
  {
    const ThreadSafety::MutexLock lock(mutex_);
    work.swap(posted_);
  }
  for (const auto& item : work) RunAndLogFailure("work for the main thread", item);
  return !work.empty();
}

}  // namespace Agent

#pragma once

#include "libs/Bus/Connection.h"
#include "libs/Bus/EventLoop.h"
#include "libs/Files/EventFd.h"
#include "libs/ThreadSafety/ThreadSafety.h"

#include <chrono>
#include <deque>
#include <functional>
#include <thread>

namespace Agent {

// The main thread's event loop: bus connections, termination, and work that other threads hand over. Made and
// run on the main thread; only Post and PutOff may be called from others. Throws std::system_error when it
// cannot be made.
class MainLoop {
 public:
  MainLoop();
  MainLoop(const MainLoop&) = delete;
  MainLoop& operator=(const MainLoop&) = delete;

  // The loop of the process, made on first use, which must be on the main thread.
  static MainLoop& Main();

  // Runs `work` on the main thread, in the order of the calls. What the work holds must be safe to hand from
  // thread to thread; what it throws is logged. After the loop has ended it waits for RunPosted.
  void Post(std::function<void()> work);

  // Posts `work` when the time is over, in place of work that was put off before. What is put off when the
  // loop ends is not done.
  void PutOff(std::chrono::microseconds time, std::function<void()> work);

  // Serves the connection from now on; false when the loop cannot take it.
  [[nodiscard]] bool Attach(Bus::Connection& bus);
  // Calls the handler, on the main thread, whenever the descriptor is readable. Main thread; null when the
  // loop cannot.
  [[nodiscard]] Bus::EventSource Watch(int descriptor, std::function<void()> handler);

  // Runs what was posted so far; false when that was nothing.
  bool RunPosted();
  [[nodiscard]] bool IsMainThread() const { return std::this_thread::get_id() == mainThread_; }

  // Runs until termination is requested, or until a connection is lost. Returns the process's exit status.
  // The connections stay open.
  int Run();
  // Runs until `done` answers true after an event, or termination is requested.
  void RunUntil(const std::function<bool()>& done);

 private:
  const Files::EventFd wakeUp_;
  Bus::EventLoop loop_;
  const std::thread::id mainThread_ = std::this_thread::get_id();
  ThreadSafety::Mutex mutex_;
  std::deque<std::function<void()>> posted_ SR_GUARDED_BY(mutex_);
  bool terminating_ = false;
  // Both are the main thread's.
  std::function<void()> putOff_;
  Bus::EventSource timer_;
  Bus::EventSource postedWork_;
  Bus::EventSource termination_;
};

}  // namespace Agent

#pragma once

#include "libs/Bus/Result.h"
#include "libs/Bus/SdBus.h"

#include <chrono>
#include <cstdint>
#include <functional>

namespace Bus {

// Something that a loop watches while this lives. Its handler may let it go.
using EventSource = EventSourcePtr;

// An event loop for connections, descriptors, times and signals. One thread. Handlers are called while it
// runs; one that throws is not called again.
class EventLoop {
 public:
  using Handler = std::function<void()>;

  [[nodiscard]] static Result<EventLoop> Make();

  // Calls the handler whenever the descriptor is readable, or its other end is closed.
  [[nodiscard]] Result<EventSource> WatchReadable(int descriptor, Handler handler);
  // Only when its other end is closed. An error for files, which cannot be watched.
  [[nodiscard]] Result<EventSource> WatchClosed(int descriptor, Handler handler);
  // Once.
  [[nodiscard]] Result<EventSource> After(std::chrono::microseconds time, Handler handler);
  // Ends the loop on the signal, which must be blocked in every thread.
  [[nodiscard]] Result<> EndOnSignal(int signal);

  // Waits for one event and handles it; false when the loop has ended or cannot go on.
  [[nodiscard]] bool RunOnce();
  // Runs until the loop ends.
  [[nodiscard]] Result<> Run();
  void End();
  // What ended the loop is a failure.
  [[nodiscard]] bool HasFailed() const;

  [[nodiscard]] sd_event* Get() const { return loop_.get(); }

 private:
  explicit EventLoop(EventLoopPtr loop) : loop_(std::move(loop)) {}
  [[nodiscard]] Result<EventSource> Watch(int descriptor, std::uint32_t events, Handler handler);

  EventLoopPtr loop_;
};

}  // namespace Bus

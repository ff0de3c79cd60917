#include "libs/Bus/EventLoop.h"

#include "libs/Bus/Callback.h"
#include "libs/Bus/Handler.h"

#include <sys/epoll.h>

#include <cstdint>
#include <ctime>
#include <memory>
#include <utility>

namespace Bus {
namespace {

int Call(void* handler) {
  return CallbackResult([handler]() -> Result<> {
    (*static_cast<EventLoop::Handler*>(handler))();
    return Nothing{};
  });
}

int HandleDescriptor(sd_event_source* /*source*/, int /*descriptor*/, std::uint32_t /*events*/,
                     void* handler) {
  return Call(handler);
}

int HandleTime(sd_event_source* /*source*/, std::uint64_t /*time*/, void* handler) {
  return Call(handler);
}

Result<EventSource> Owned(int result, sd_event_source* source, std::unique_ptr<EventLoop::Handler> handler) {
  return Owning<EventSource>(result, source, std::move(handler), sd_event_source_set_destroy_callback);
}

}  // namespace

Result<EventLoop> EventLoop::Make() {
  sd_event* loop = nullptr;
  if (const int result = sd_event_new(&loop); result < 0) return Error::OfResult(result);
  return EventLoop(EventLoopPtr(loop));
}

Result<EventSource> EventLoop::Watch(int descriptor, std::uint32_t events, Handler handler) {
  auto owned = std::make_unique<Handler>(std::move(handler));
  sd_event_source* source = nullptr;
  const int result = sd_event_add_io(Get(), &source, descriptor, events, HandleDescriptor, owned.get());
  return Owned(result, source, std::move(owned));
}

Result<EventSource> EventLoop::WatchReadable(int descriptor, Handler handler) {
  return Watch(descriptor, EPOLLIN, std::move(handler));
}

Result<EventSource> EventLoop::WatchClosed(int descriptor, Handler handler) {
  return Watch(descriptor, 0, std::move(handler));
}

Result<EventSource> EventLoop::After(std::chrono::microseconds time, Handler handler) {
  auto owned = std::make_unique<Handler>(std::move(handler));
  sd_event_source* source = nullptr;
  const int result = sd_event_add_time_relative(
      Get(), &source, CLOCK_MONOTONIC, static_cast<std::uint64_t>(time.count()), 0, HandleTime, owned.get());
  return Owned(result, source, std::move(owned));
}

// Without a handler the loop ends.
Result<> EventLoop::EndOnSignal(int signal) {
  return ResultOf(sd_event_add_signal(Get(), nullptr, signal, nullptr, nullptr));
}

bool EventLoop::RunOnce() {
  return sd_event_get_state(Get()) != SD_EVENT_FINISHED && sd_event_run(Get(), UINT64_MAX) >= 0;
}

Result<> EventLoop::Run() {
  return ResultOf(sd_event_loop(Get()));
}

void EventLoop::End() {
  sd_event_exit(Get(), 0);
}

bool EventLoop::HasFailed() const {
  int status = 1;
  sd_event_get_exit_code(Get(), &status);
  return status != 0;
}

}  // namespace Bus

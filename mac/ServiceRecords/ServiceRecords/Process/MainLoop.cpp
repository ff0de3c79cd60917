#include "Process/MainLoop.h"

#include "Process/RunAndLogFailure.h"
#include "libs/Termination/TerminationEvent.h"

#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <system_error>
#include <utility>

namespace {

void Check(int result, const char* what) {
  if (result < 0) throw std::system_error(-result, std::generic_category(), what);
}

}  // namespace

MainLoop::MainLoop() : wakeUp_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  if (wakeUp_ < 0) throw std::system_error(errno, std::generic_category(), "eventfd");
  sd_event* loop = nullptr;
  Check(sd_event_new(&loop), "sd_event_new");
  loop_.reset(loop);
  Check(sd_event_add_io(loop, nullptr, wakeUp_, EPOLLIN, HandlePosted, this), "sd_event_add_io");
  Check(sd_event_add_io(loop, nullptr, TerminationEvent::Descriptor(), EPOLLIN, HandleTermination, this),
        "sd_event_add_io");
}

MainLoop::~MainLoop() {
  timer_.reset();
  loop_.reset();
  ::close(wakeUp_);
}

MainLoop& MainLoop::Main() {
  static MainLoop loop;
  return loop;
}

void MainLoop::Post(std::function<void()> work) {
  {
    const std::lock_guard lock(mutex_);
    posted_.push_back(std::move(work));
  }
  eventfd_write(wakeUp_, 1);
}

void MainLoop::PutOff(std::chrono::microseconds time, std::function<void()> work) {
  Post([this, time, work = std::move(work)] {
    putOff_ = work;
    StartTimer(time);
  });
}

void MainLoop::StartTimer(std::chrono::microseconds time) {
  sd_event_source* timer = nullptr;
  Check(sd_event_add_time_relative(loop_.get(), &timer, CLOCK_MONOTONIC,
                                   static_cast<std::uint64_t>(time.count()), 0, HandleTime, this),
        "sd_event_add_time_relative");
  timer_.reset(timer);
}

bool MainLoop::Attach(sd_bus& bus) {
  return sd_bus_attach_event(&bus, loop_.get(), SD_EVENT_PRIORITY_NORMAL) >= 0 &&
         sd_bus_set_exit_on_disconnect(&bus, 1) >= 0;
}

int MainLoop::Run() {
  RunUntil([] { return false; });
  if (terminating_) return EXIT_SUCCESS;
  int status = EXIT_FAILURE;
  sd_event_get_exit_code(loop_.get(), &status);
  return status;
}

void MainLoop::RunUntil(const std::function<bool()>& done) {
  while (!done() && !terminating_ && sd_event_get_state(loop_.get()) != SD_EVENT_FINISHED) {
    if (sd_event_run(loop_.get(), UINT64_MAX) < 0) return;
  }
}

int MainLoop::HandlePosted(sd_event_source* /*source*/, int descriptor, std::uint32_t /*events*/,
                           void* self) {
  eventfd_t count = 0;
  eventfd_read(descriptor, &count);
  static_cast<MainLoop*>(self)->RunPosted();
  return 0;
}

bool MainLoop::RunPosted() {
  std::deque<std::function<void()>> work;
  {
    const std::lock_guard lock(mutex_);
    work.swap(posted_);
  }
  for (const auto& item : work) RunAndLogFailure("work for the main thread", item);
  return !work.empty();
}

int MainLoop::HandleTime(sd_event_source* /*source*/, std::uint64_t /*time*/, void* self) {
  auto& loop = *static_cast<MainLoop*>(self);
  loop.Post(std::exchange(loop.putOff_, nullptr));
  return 0;
}

// Not the loop's own exit, at which every connection closes itself: there may be something left to say.
int MainLoop::HandleTermination(sd_event_source* source, int /*descriptor*/, std::uint32_t /*events*/,
                                void* self) {
  static_cast<MainLoop*>(self)->terminating_ = true;
  return sd_event_source_set_enabled(source, SD_EVENT_OFF);
}

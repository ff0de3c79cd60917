#include "bus/TwoPrograms.h"
#include "libs/Bus/EventLoop.h"
#include "libs/Files/EventFd.h"

#include <fcntl.h>
#include <unistd.h>

using namespace std::chrono_literals;

namespace {

class EventLoopTest : public TwoPrograms {
 protected:
  Bus::EventLoop loop_ = std::move(*Bus::EventLoop::Make());
  Files::EventFd event_;
};

TEST_F(EventLoopTest, CallsTheHandlerWheneverTheDescriptorIsReadable) {
  int calls = 0;
  const auto source = loop_.WatchReadable(event_.Descriptor(), [&] {
    event_.Clear();
    ++calls;
  });
  ASSERT_TRUE(source);
  for (int i = 1; i <= 2; ++i) {
    event_.Raise();
    ASSERT_TRUE(loop_.RunOnce());
    EXPECT_EQ(calls, i);
  }
}

TEST_F(EventLoopTest, AHandlerMayLetItsSourceGo) {
  const auto kept = std::make_shared<int>(0);
  Bus::EventSource source;
  ASSERT_TRUE(Bus::Keep(source, loop_.WatchReadable(event_.Descriptor(), [&source, kept] {
    source.reset();
    ++*kept;
  })));
  event_.Raise();
  ASSERT_TRUE(loop_.RunOnce());
  EXPECT_EQ(*kept, 1);
  EXPECT_EQ(kept.use_count(), 1);
}

TEST_F(EventLoopTest, AHandlerThatThrowsIsNotCalledAgain) {
  int calls = 0;
  const auto source = loop_.WatchReadable(event_.Descriptor(), [&] {
    ++calls;
    throw std::runtime_error("it broke");
  });
  event_.Raise();
  ASSERT_TRUE(loop_.RunOnce());
  const auto end = loop_.After(1ms, [this] { loop_.End(); });
  EXPECT_TRUE(loop_.Run());
  EXPECT_EQ(calls, 1);
}

TEST_F(EventLoopTest, EndsWhenItIsToldTo) {
  const auto end = loop_.After(0ms, [this] { loop_.End(); });
  EXPECT_TRUE(loop_.Run());
  EXPECT_FALSE(loop_.HasFailed());
  EXPECT_FALSE(loop_.RunOnce());
}

TEST_F(EventLoopTest, SeesThatTheOtherEndOfAPipeIsClosed) {
  int ends[2] = {-1, -1};
  ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
  const auto source = loop_.WatchClosed(ends[1], [this] { loop_.End(); });
  ASSERT_TRUE(source);
  ::close(ends[0]);
  EXPECT_TRUE(loop_.Run());
  ::close(ends[1]);
}

TEST_F(EventLoopTest, AFileCannotBeWatched) {
  const int file = ::open("/proc/self/exe", O_RDONLY | O_CLOEXEC);
  ASSERT_GE(file, 0);
  EXPECT_FALSE(loop_.WatchClosed(file, [] {}));
  ::close(file);
}

TEST_F(EventLoopTest, ServesAConnectionUntilThatIsLost) {
  int calls = 0;
  ServeMethod([&calls] { ++calls; });
  ASSERT_TRUE(service_.Attach(loop_));
  ASSERT_TRUE(service_.EndLoopWhenLost());
  const auto slot =
      caller_.CallAsync(kService, {}, "method", [](const Bus::Result<Bus::Message>& /*reply*/) {});
  ASSERT_TRUE(caller_.Flush());
  while (calls == 0) ASSERT_TRUE(loop_.RunOnce());
  bus_.Terminate();
  EXPECT_TRUE(loop_.Run());
  EXPECT_TRUE(loop_.HasFailed());
}

}  // namespace

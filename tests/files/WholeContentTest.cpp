#include "libs/Files/FileDescriptor.h"
#include "libs/Files/WholeContent.h"
#include "support/FileSystemFaults.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <string>

namespace {

// Neither end blocks: what does not fit at once is written in parts.
struct Pipe {
  Pipe() {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0) return;
    reading = Files::FileDescriptor(ends[0]);
    writing = Files::FileDescriptor(ends[1]);
  }

  // What is in it by now.
  std::string Take() const {
    std::string content(100'000, '\0');
    content.resize(Files::ReadInto(reading.Get(), content).bytes);
    return content;
  }

  Files::FileDescriptor reading;
  Files::FileDescriptor writing;
};

TEST(WholeContentTest, IsReadThoughEachCallDoesLessOrIsInterrupted) {
  Pipe pipe;
  TestSupport::FileSystemFaults faults;
  int calls = 0;
  faults.read = [&](int) {
    if (++calls % 2 == 1) return EINTR;
    if (calls > 20) return pipe.writing.Close() ? 0 : EIO;
    return Files::WriteAll(pipe.writing.Get(), std::string(1000, 'x')).error.value();
  };
  std::string content = "what was there before";

  EXPECT_FALSE(Files::ReadAll(pipe.reading.Get(), 10, content));
  EXPECT_EQ(content, std::string(10'000, 'x'));
}

TEST(WholeContentTest, IsWrittenThoughEachCallDoesLessOrIsInterrupted) {
  const Pipe pipe;
  TestSupport::FileSystemFaults faults;
  std::string taken;
  int calls = 0;
  faults.write = [&](int) {
    taken += pipe.Take();
    return ++calls % 2 == 1 ? EINTR : 0;
  };
  const std::string content(300'000, 'x');

  const Files::Transferred written = Files::WriteAll(pipe.writing.Get(), content + "end");
  EXPECT_FALSE(written.error);
  EXPECT_EQ(written.bytes, content.size() + 3);
  EXPECT_EQ(taken + pipe.Take(), content + "end");
  EXPECT_GT(calls, 4);
}

TEST(WholeContentTest, FillsTheRoomAndLeavesTheRest) {
  Pipe pipe;
  ASSERT_EQ(Files::WriteAll(pipe.writing.Get(), "abcdef").bytes, 6U);
  pipe.writing.Close();
  std::array<char, 4> room{};

  const Files::Transferred first = Files::ReadInto(pipe.reading.Get(), room);
  EXPECT_EQ(std::string(room.data(), first.bytes), "abcd");
  const Files::Transferred second = Files::ReadInto(pipe.reading.Get(), room);
  EXPECT_EQ(std::string(room.data(), second.bytes), "ef");
  EXPECT_FALSE(second.error);
}

TEST(WholeContentTest, TellsHowFarItCameAndWhyNoFurther) {
  const Pipe pipe;
  const Files::Transferred written = Files::WriteAll(pipe.writing.Get(), std::string(300'000, 'x'));
  EXPECT_EQ(written.error, std::errc::resource_unavailable_try_again);
  EXPECT_GT(written.bytes, 0U);
  EXPECT_EQ(pipe.Take().size(), written.bytes);

  ASSERT_FALSE(Files::WriteAll(pipe.writing.Get(), "abc").error);
  std::string content;
  EXPECT_EQ(Files::ReadAll(pipe.reading.Get(), 0, content), std::errc::resource_unavailable_try_again);
  EXPECT_EQ(content, "abc");
}

}  // namespace

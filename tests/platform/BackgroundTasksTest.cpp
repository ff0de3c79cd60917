#include "Process/BackgroundTasks.h"
#include "support/CapturedSystemLog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

using testing::ElementsAre;
using testing::ElementsAreArray;
using UserWait = Agent::BackgroundTasks::UserWait;

namespace {

// Work that goes on step by step, as the test lets it.
class BackgroundTasksTest : public testing::Test {
 protected:
  static constexpr int kAtATime = Agent::BackgroundTasks::kWorkedOnAtATime;
  static constexpr int kThreads = Agent::BackgroundTasks::kThreads;

  ~BackgroundTasksTest() override { LetAllGoOn(); }

  void StartWork(int number) {
    tasks_.Start([this, number] {
      Note(worked_, number);
      AwaitStep(number, 1);
    });
  }
  // Works, asks the user, works again.
  void StartQuestion(int number, UserWait::End end = UserWait::End::InTurn) {
    tasks_.Start([this, number, end] {
      {
        const UserWait wait(end);
        Note(asked_, number);
        AwaitStep(number, 1);
        NoteReturn(number);
      }
      Note(worked_, number);
      AwaitStep(number, 2);
    });
  }

  void GoOn(int number) {
    const std::lock_guard lock(mutex_);
    ++steps_[number];
    changed_.notify_all();
  }
  void AwaitStep(int number, int step) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [&] { return free_ || steps_[number] >= step; });
  }
  void LetAllGoOn() {
    const std::lock_guard lock(mutex_);
    free_ = true;
    changed_.notify_all();
  }

  [[nodiscard]] bool WaitForWorked(std::size_t count) {
    return WaitFor(worked_, count, std::chrono::seconds(20));
  }
  [[nodiscard]] bool WaitForAsked(std::size_t count) {
    return WaitFor(asked_, count, std::chrono::seconds(20));
  }
  // Whether no more are worked on, or asked, for a while.
  [[nodiscard]] bool StaysAtWorked(std::size_t count) {
    return !WaitFor(worked_, count + 1, std::chrono::milliseconds(100));
  }
  [[nodiscard]] bool StaysAtAsked(std::size_t count) {
    return !WaitFor(asked_, count + 1, std::chrono::milliseconds(100));
  }
  // Whether the thread of that question, which has been let go on, waits for its turn. That shows in nothing
  // but that it sleeps.
  [[nodiscard]] bool WaitsForTurn(int number) {
    std::unique_lock lock(mutex_);
    const auto hasReturned = [&] { return returned_.contains(number); };
    if (!changed_.wait_for(lock, std::chrono::seconds(20), hasReturned)) return false;
    const pid_t thread = returned_[number];
    lock.unlock();
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!Sleeps(thread) && std::chrono::steady_clock::now() < deadline) std::this_thread::yield();
    return Sleeps(thread);
  }
  [[nodiscard]] std::vector<int> Worked() {
    const std::lock_guard lock(mutex_);
    return worked_;
  }

  std::mutex mutex_;
  std::condition_variable changed_;
  std::map<int, int> steps_;
  bool free_ = false;
  std::vector<int> worked_;  // what was begun to be worked on, in order
  std::vector<int> asked_;
  std::map<int, pid_t> returned_;  // the threads that come back from the user
  Agent::BackgroundTasks tasks_;   // ends first

 private:
  void NoteReturn(int number) {
    const std::lock_guard lock(mutex_);
    returned_[number] = ::gettid();
    changed_.notify_all();
  }
  static bool Sleeps(pid_t thread) {
    std::ifstream file("/proc/self/task/" + std::to_string(thread) + "/stat");
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    return text.find(") S ") != std::string::npos;
  }
  void Note(std::vector<int>& numbers, int number) {
    const std::lock_guard lock(mutex_);
    numbers.push_back(number);
    changed_.notify_all();
  }
  bool WaitFor(const std::vector<int>& numbers, std::size_t count, std::chrono::milliseconds limit) {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, limit, [&] { return numbers.size() >= count; });
  }
};

TEST_F(BackgroundTasksTest, EightAreWorkedOnAtATimeAndTheRestInOrderOfArrival) {
  std::vector<int> order;
  for (int number = 0; number < kAtATime; ++number) StartWork(number);
  ASSERT_TRUE(WaitForWorked(kAtATime));
  for (int number = kAtATime; number < 2 * kAtATime; ++number) StartWork(number);
  EXPECT_TRUE(StaysAtWorked(kAtATime));
  for (int number = 0; number < kAtATime; ++number) {
    GoOn(number);
    ASSERT_TRUE(WaitForWorked(static_cast<std::size_t>(kAtATime + number + 1)));
    order.push_back(kAtATime + number);
  }
  const std::vector<int> worked = Worked();
  EXPECT_THAT(std::vector<int>(worked.begin() + kAtATime, worked.end()), ElementsAreArray(order));
}

TEST_F(BackgroundTasksTest, WhatWaitsForTheUserIsNotCountedButSixtyFourThreadsAreTheLimit) {
  for (int number = 0; number <= kThreads; ++number) StartQuestion(number);
  ASSERT_TRUE(WaitForAsked(kThreads));
  EXPECT_TRUE(StaysAtAsked(kThreads));
  GoOn(0);
  GoOn(0);
  EXPECT_TRUE(WaitForAsked(kThreads + 1));
}

TEST_F(BackgroundTasksTest, WhoComesBackFromTheUserWaitsForRoomAndGoesBeforeWhatHasNotBegun) {
  StartQuestion(100);
  ASSERT_TRUE(WaitForAsked(1));
  for (int number = 0; number < kAtATime; ++number) StartWork(number);
  ASSERT_TRUE(WaitForWorked(kAtATime));
  GoOn(100);
  ASSERT_TRUE(WaitsForTurn(100));
  EXPECT_TRUE(StaysAtWorked(kAtATime));
  StartWork(200);
  GoOn(0);
  ASSERT_TRUE(WaitForWorked(kAtATime + 1));
  EXPECT_EQ(Worked().back(), 100);
  GoOn(1);
  ASSERT_TRUE(WaitForWorked(kAtATime + 2));
  EXPECT_EQ(Worked().back(), 200);
}

TEST_F(BackgroundTasksTest, WhoComeBackFromTheUserGoOnInTheirOrder) {
  constexpr int kQuestions = 4;
  for (int number = 0; number < kQuestions; ++number) StartQuestion(100 + number);
  ASSERT_TRUE(WaitForAsked(kQuestions));
  for (int number = 0; number < kAtATime; ++number) StartWork(number);
  ASSERT_TRUE(WaitForWorked(kAtATime));
  for (const int number : {103, 101, 100, 102}) {
    GoOn(number);
    ASSERT_TRUE(WaitsForTurn(number));
  }
  EXPECT_TRUE(StaysAtWorked(kAtATime));
  for (int number = 0; number < kQuestions; ++number) {
    GoOn(number);
    ASSERT_TRUE(WaitForWorked(static_cast<std::size_t>(kAtATime + number + 1)));
  }
  const std::vector<int> worked = Worked();
  EXPECT_THAT(std::vector<int>(worked.begin() + kAtATime, worked.end()), ElementsAre(103, 101, 100, 102));
}

TEST_F(BackgroundTasksTest, RoomForSeveralIsTakenBySeveral) {
  constexpr int kQuestions = kAtATime / 2;
  for (int round = 0; round < 50; ++round) {
    const auto first = [&](int kind) { return 1000 * round + 100 * kind; };
    const std::size_t workedBefore = Worked().size();
    for (int number = 0; number < kQuestions; ++number) StartQuestion(first(1) + number);
    ASSERT_TRUE(WaitForAsked(static_cast<std::size_t>(kQuestions * (round + 1))));
    for (int number = 0; number < kAtATime; ++number) StartWork(first(2) + number);
    ASSERT_TRUE(WaitForWorked(workedBefore + kAtATime));
    for (int number = 0; number < kQuestions; ++number) {
      GoOn(first(1) + number);
      StartWork(first(3) + number);
    }
    for (int number = 0; number < kAtATime; ++number) GoOn(first(2) + number);
    ASSERT_TRUE(WaitForWorked(workedBefore + 2 * kAtATime)) << round;
    for (int number = 0; number < kQuestions; ++number) {
      GoOn(first(1) + number);
      GoOn(first(3) + number);
    }
  }
}

TEST_F(BackgroundTasksTest, AWorksRoomIsFreeWhenWhatItHeldHasEnded) {
  for (int number = 1; number < kAtATime; ++number) StartWork(number);
  std::shared_ptr<void> held(nullptr, [this](void*) { AwaitStep(100, 2); });
  tasks_.Start([this, held] { AwaitStep(100, 1); });
  held.reset();
  GoOn(100);
  StartWork(200);
  ASSERT_TRUE(WaitForWorked(kAtATime - 1));
  EXPECT_TRUE(StaysAtWorked(kAtATime - 1));
  GoOn(100);
  ASSERT_TRUE(WaitForWorked(kAtATime));
  EXPECT_EQ(Worked().back(), 200);
}

TEST_F(BackgroundTasksTest, WhoHoldsALockGoesOnAtOnce) {
  StartQuestion(100, UserWait::End::AtOnce);
  ASSERT_TRUE(WaitForAsked(1));
  for (int number = 0; number < kAtATime; ++number) StartWork(number);
  ASSERT_TRUE(WaitForWorked(kAtATime));
  GoOn(100);
  ASSERT_TRUE(WaitForWorked(kAtATime + 1));
  EXPECT_EQ(Worked().back(), 100);
  StartWork(200);
  GoOn(0);
  EXPECT_TRUE(StaysAtWorked(kAtATime + 1)) << "eight again, with the one that went on at once";
}

TEST_F(BackgroundTasksTest, AtTheEndWhatHasNotBegunIsDroppedWithAllThatItHolds) {
  for (int number = 0; number < kAtATime; ++number) StartWork(number);
  ASSERT_TRUE(WaitForWorked(kAtATime));
  const auto held = std::make_shared<int>();
  tasks_.Start([this, held] { StartWork(200); });
  EXPECT_FALSE(tasks_.Finish(std::chrono::milliseconds(0)));
  EXPECT_EQ(held.use_count(), 1);
  tasks_.Start([this, held] { StartWork(201); });
  EXPECT_EQ(held.use_count(), 1);
  LetAllGoOn();
  EXPECT_TRUE(tasks_.Finish(std::chrono::seconds(20)));
  EXPECT_EQ(Worked().size(), static_cast<std::size_t>(kAtATime));
}

TEST_F(BackgroundTasksTest, AtTheEndWhoComesBackFromTheUserNeedsNoRoom) {
  StartQuestion(100);
  ASSERT_TRUE(WaitForAsked(1));
  for (int number = 0; number < kAtATime; ++number) StartWork(number);
  ASSERT_TRUE(WaitForWorked(kAtATime));
  EXPECT_FALSE(tasks_.Finish(std::chrono::milliseconds(0)));
  GoOn(100);
  EXPECT_TRUE(WaitForWorked(kAtATime + 1));
}

TEST_F(BackgroundTasksTest, TheEndLetsThoseGoOnWhoWaitForRoom) {
  StartQuestion(100);
  ASSERT_TRUE(WaitForAsked(1));
  for (int number = 0; number < kAtATime; ++number) StartWork(number);
  ASSERT_TRUE(WaitForWorked(kAtATime));
  GoOn(100);
  EXPECT_TRUE(StaysAtWorked(kAtATime));
  EXPECT_FALSE(tasks_.Finish(std::chrono::milliseconds(0)));
  EXPECT_TRUE(WaitForWorked(kAtATime + 1));
}

// A process of an ordinary user that may start no more threads, until this object goes.
class NoFreeThread {
 public:
  NoFreeThread() {
    constexpr uid_t kNobody = 65534;
    if (::getuid() == 0 && ::setresuid(kNobody, kNobody, 0) != 0) std::_Exit(2);
    ::getrlimit(RLIMIT_NPROC, &before_);
    const rlimit limit{0, before_.rlim_max};
    ::setrlimit(RLIMIT_NPROC, &limit);
  }
  ~NoFreeThread() { ::setrlimit(RLIMIT_NPROC, &before_); }
  NoFreeThread(const NoFreeThread&) = delete;
  NoFreeThread& operator=(const NoFreeThread&) = delete;

 private:
  rlimit before_{};
};

// In processes of their own, whose user and limits end with them.
class WithoutThreadsDeathTest : public BackgroundTasksTest {
 protected:
  WithoutThreadsDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }

  [[noreturn]] static void ExitWell(bool well) { std::_Exit(well ? 0 : 1); }
};

TEST_F(WithoutThreadsDeathTest, WhatNobodyCouldStartLaterIsDropped) {
  EXPECT_EXIT(
      {
        const NoFreeThread limit;
        TestSupport::CapturedSystemLog systemLog;
        StartWork(1);
        const bool isLogged = systemLog.TakeLines().size() == 1;
        ExitWell(tasks_.Finish(std::chrono::seconds(0)) && isLogged && Worked().empty());
      },
      testing::ExitedWithCode(0), "");
}

TEST_F(WithoutThreadsDeathTest, WhatFindsNoThreadWaitsForTheEndOfAnother) {
  EXPECT_EXIT(
      {
        StartWork(1);
        const bool hasBegun = WaitForWorked(1);
        {
          const NoFreeThread limit;
          StartWork(2);
        }
        GoOn(1);
        ExitWell(hasBegun && WaitForWorked(2) && Worked().back() == 2);
      },
      testing::ExitedWithCode(0), "");
}

TEST_F(BackgroundTasksTest, AFailureEndsOneWorkAndLeavesItsRoom) {
  for (int number = 0; number < 3 * kAtATime; ++number) tasks_.Start([] { throw std::runtime_error("no"); });
  StartWork(1);
  EXPECT_TRUE(WaitForWorked(1));
}

TEST_F(BackgroundTasksTest, OtherThreadsMayWaitForTheUserToo) {
  const UserWait inTurn(UserWait::End::InTurn);
  const UserWait atOnce(UserWait::End::AtOnce);
  StartWork(1);
  EXPECT_TRUE(WaitForWorked(1));
}

}  // namespace

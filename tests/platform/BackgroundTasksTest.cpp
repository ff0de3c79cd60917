#include "BackgroundTasks.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

using testing::ElementsAreArray;
using UserWait = BackgroundTasks::UserWait;

namespace {

// Work that goes on step by step, as the test lets it.
class BackgroundTasksTest : public testing::Test {
 protected:
  static constexpr int kAtATime = BackgroundTasks::kWorkedOnAtATime;
  static constexpr int kThreads = BackgroundTasks::kThreads;

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
  BackgroundTasks tasks_;  // ends first

 private:
  void Note(std::vector<int>& numbers, int number) {
    const std::lock_guard lock(mutex_);
    numbers.push_back(number);
    changed_.notify_all();
  }
  void AwaitStep(int number, int step) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [&] { return free_ || steps_[number] >= step; });
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
  EXPECT_TRUE(StaysAtWorked(kAtATime));
  StartWork(200);
  GoOn(0);
  ASSERT_TRUE(WaitForWorked(kAtATime + 1));
  EXPECT_EQ(Worked().back(), 100);
  GoOn(1);
  ASSERT_TRUE(WaitForWorked(kAtATime + 2));
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

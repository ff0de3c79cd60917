#include "Process/ChangeQueue.h"
#include "support/CapturedSystemLog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <vector>

using testing::ElementsAre;
using namespace std::chrono_literals;

namespace {

class ChangeQueueTest : public testing::Test {
 protected:
  ~ChangeQueueTest() override { LetGoOn(); }

  // Notes its number when it is made, and its end when it has gone.
  Agent::ChangeQueue::Change Noted(int number) {
    const std::shared_ptr<void> end(nullptr, [this, number](void*) { Note(-number); });
    return [this, number, end] { Note(number); };
  }
  // The same, but once the test lets it go on.
  Agent::ChangeQueue::Change Held(int number) {
    return [this, change = Noted(number)] {
      Note(0);
      std::unique_lock lock(mutex_);
      changed_.wait(lock, [this] { return free_; });
      lock.unlock();
      change();
    };
  }
  void LetGoOn() {
    const std::lock_guard lock(mutex_);
    free_ = true;
    changed_.notify_all();
  }

  void Note(int number) {
    const std::lock_guard lock(mutex_);
    notes_.push_back(number);
    changed_.notify_all();
  }
  [[nodiscard]] bool WaitForNotes(std::size_t count) {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, 20s, [&] { return notes_.size() >= count; });
  }
  [[nodiscard]] std::vector<int> Notes() {
    const std::lock_guard lock(mutex_);
    return notes_;
  }

  std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<int> notes_;
  bool free_ = false;
  std::atomic<bool> isOver_ = false;
  std::atomic<int> lastOnes_ = 0;
  std::function<void()> last_;  // set before the end
  Agent::ChangeQueue queue_{[this] { return isOver_.load(); },
                            [this] {
                              ++lastOnes_;
                              if (last_) last_();
                            }};
};

TEST_F(ChangeQueueTest, ChangesAreMadeOneAfterTheOtherInTheirOrder) {
  queue_.Add(Held(1));
  queue_.Add(Noted(2));
  queue_.Add(Noted(3));
  ASSERT_TRUE(WaitForNotes(1));
  LetGoOn();
  ASSERT_TRUE(WaitForNotes(7));
  EXPECT_THAT(Notes(), ElementsAre(0, 1, -1, 2, -2, 3, -3)) << "what a change holds ends with it";
}

TEST_F(ChangeQueueTest, AChangeThatFailsIsLoggedAndKeepsNoOtherBack) {
  TestSupport::CapturedSystemLog systemLog;
  queue_.Add([] { throw std::runtime_error("no memory"); });
  queue_.Add([] { throw 1; });  // NOLINT: whatever is thrown
  queue_.Add(Noted(1));
  ASSERT_TRUE(WaitForNotes(2));
  EXPECT_THAT(systemLog.TakeLines(), ElementsAre("changing the list of stores failed: no memory",
                                                 "changing the list of stores failed"));
}

TEST_F(ChangeQueueTest, AtTheEndWhatHasNotBegunIsDroppedInItsOrderBehindWhatHas) {
  std::vector<int> expected = {0, 1, -1};
  queue_.Add(Held(1));
  for (int number = 2; number < 100; ++number) {
    queue_.Add(Noted(number));
    expected.push_back(-number);
  }
  ASSERT_TRUE(WaitForNotes(1));
  queue_.Close();
  EXPECT_THAT(Notes(), ElementsAre(0));
  LetGoOn();
  EXPECT_TRUE(queue_.Finish(20s));
  EXPECT_EQ(Notes(), expected);
}

TEST_F(ChangeQueueTest, WhenItIsOverNothingBeginsEvenBeforeTheQueueIsClosed) {
  queue_.Add(Held(1));
  queue_.Add(Noted(2));
  ASSERT_TRUE(WaitForNotes(1));
  isOver_ = true;
  LetGoOn();
  EXPECT_TRUE(queue_.Finish(20s));
  EXPECT_THAT(Notes(), ElementsAre(0, 1, -1, -2));
}

TEST_F(ChangeQueueTest, TheLastChangeIsMadeBehindTheOneThatWasBegunAndBeforeTheEnd) {
  queue_.Add(Held(1));
  queue_.Add(Noted(2));
  last_ = [this] { Note(100); };
  ASSERT_TRUE(WaitForNotes(1));
  queue_.Close();
  EXPECT_EQ(lastOnes_, 0);
  LetGoOn();
  EXPECT_TRUE(queue_.Finish(20s));
  EXPECT_THAT(Notes(), ElementsAre(0, 1, -1, 100, -2));
  EXPECT_EQ(lastOnes_, 1);
}

TEST_F(ChangeQueueTest, ALastChangeThatDoesNotEndIsNotWaitedFor) {
  last_ = Held(1);
  queue_.Close();
  ASSERT_TRUE(WaitForNotes(1));
  EXPECT_FALSE(queue_.Finish(1ms));
  LetGoOn();
}

TEST_F(ChangeQueueTest, WhatIsAddedAfterTheEndIsDropped) {
  queue_.Close();
  queue_.Add(Noted(1));
  EXPECT_THAT(Notes(), ElementsAre(-1));
  EXPECT_TRUE(queue_.Finish(20s));
}

TEST_F(ChangeQueueTest, AChangeThatDoesNotEndIsNotWaitedForAndTheOthersAreDropped) {
  queue_.Add(Held(1));
  queue_.Add(Noted(2));
  ASSERT_TRUE(WaitForNotes(1));
  queue_.Close();
  EXPECT_FALSE(queue_.Finish(1ms));
  EXPECT_THAT(Notes(), ElementsAre(0, -2));
  LetGoOn();
}

}  // namespace

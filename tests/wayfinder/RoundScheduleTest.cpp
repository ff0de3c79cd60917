#include "libs/Wayfinder/Deciding/RoundSchedule.h"

#include <gtest/gtest.h>

using std::chrono::milliseconds;
using std::chrono::minutes;
using std::chrono::seconds;
using Wayfinding::RoundSchedule;

namespace {

class RoundScheduleTest : public testing::Test {
 protected:
  // A round that begins when it is due, and ends at once. Returns the delay of its repetition.
  milliseconds Fail(bool withNewStore = false, double chance = 0.5) {
    const auto due = schedule_.NextDue().value_or(start_);
    EXPECT_TRUE(schedule_.TakeStart(due));
    return schedule_.TakeFailure(due, chance, withNewStore);
  }

  RoundSchedule schedule_;
  const RoundSchedule::TimePoint start_{minutes(100)};
};

TEST_F(RoundScheduleTest, NothingIsDueWhenNothingHappened) {
  EXPECT_FALSE(schedule_.NextDue());
  EXPECT_FALSE(schedule_.TakeStart(start_));
  EXPECT_FALSE(schedule_.TakeLook(start_));
}

TEST_F(RoundScheduleTest, ANewListIsAskedAtOnceAndForTenSecondsAtMost) {
  schedule_.TakeNewStores(start_);
  EXPECT_EQ(schedule_.NextDue(), start_);
  EXPECT_TRUE(schedule_.TakeStart(start_));
  EXPECT_FALSE(schedule_.TakeStart(start_));
  EXPECT_EQ(schedule_.Deadline(), start_ + seconds(10));
  EXPECT_EQ(schedule_.NextDue(), start_ + seconds(10));
}

TEST_F(RoundScheduleTest, NothingIsDueAfterARoundWithAnswers) {
  schedule_.TakeNewStores(start_);
  ASSERT_TRUE(schedule_.TakeStart(start_));
  schedule_.TakeEnd();
  EXPECT_FALSE(schedule_.IsRunning());
  EXPECT_FALSE(schedule_.NextDue());
}

TEST_F(RoundScheduleTest, ABurstOfEventsIsGatheredForOneSecondFromItsFirst) {
  schedule_.TakeNetworkEvent(start_);
  schedule_.TakeNetworkEvent(start_ + milliseconds(900));
  EXPECT_EQ(schedule_.NextDue(), start_ + seconds(1));
  EXPECT_FALSE(schedule_.TakeLook(start_ + milliseconds(999)));
  EXPECT_TRUE(schedule_.TakeLook(start_ + seconds(1)));
  EXPECT_FALSE(schedule_.TakeLook(start_ + seconds(1)));
  EXPECT_FALSE(schedule_.NextDue()) << "a look that finds nothing new starts nothing";
}

TEST_F(RoundScheduleTest, ARoundOnANewNetworkIsInTenSecondsAfterTheFirstEvent) {
  schedule_.TakeNetworkEvent(start_);
  ASSERT_TRUE(schedule_.TakeLook(start_ + seconds(1)));
  schedule_.TakeNewNetwork(start_ + seconds(1));
  ASSERT_TRUE(schedule_.TakeStart(start_ + seconds(1)));
  EXPECT_EQ(schedule_.Deadline(), start_ + seconds(10));
}

TEST_F(RoundScheduleTest, ANewNetworkStartsTheRunningRoundAfresh) {
  schedule_.TakeNewStores(start_);
  ASSERT_TRUE(schedule_.TakeStart(start_));
  schedule_.TakeNetworkEvent(start_ + seconds(2));
  ASSERT_TRUE(schedule_.TakeLook(start_ + seconds(3)));
  schedule_.TakeNewNetwork(start_ + seconds(3));
  EXPECT_TRUE(schedule_.TakeStart(start_ + seconds(3)));
  EXPECT_EQ(schedule_.Deadline(), start_ + seconds(12));
}

TEST_F(RoundScheduleTest, AfterALossNothingIsAskedBeforeTheLook) {
  schedule_.TakeNewStores(start_);
  ASSERT_TRUE(schedule_.TakeStart(start_));
  schedule_.TakeNetworkEvent(start_ + seconds(2));
  schedule_.TakeLoss();
  EXPECT_FALSE(schedule_.IsRunning());
  EXPECT_EQ(schedule_.NextDue(), start_ + seconds(3));
  EXPECT_FALSE(schedule_.TakeStart(start_ + seconds(3)));
  EXPECT_TRUE(schedule_.TakeLook(start_ + seconds(3)));
}

TEST_F(RoundScheduleTest, ALossTakesBackAStart) {
  schedule_.TakeNewStores(start_);
  schedule_.TakeLoss();
  EXPECT_FALSE(schedule_.TakeStart(start_));
  EXPECT_FALSE(schedule_.NextDue());
}

TEST_F(RoundScheduleTest, ARoundWithoutAnAnswerIsRepeatedLaterAndLater) {
  schedule_.TakeNewStores(start_);
  ASSERT_TRUE(schedule_.TakeStart(start_));
  EXPECT_EQ(schedule_.TakeFailure(start_, 0.5, false), seconds(1));
  EXPECT_EQ(schedule_.NextDue(), start_ + seconds(1));
  EXPECT_FALSE(schedule_.TakeStart(start_ + milliseconds(999)));
  ASSERT_TRUE(schedule_.TakeStart(start_ + seconds(1)));
  EXPECT_EQ(schedule_.Deadline(), start_ + seconds(11));
  EXPECT_EQ(schedule_.TakeFailure(start_ + seconds(1), 0.5, false), seconds(2));
}

TEST_F(RoundScheduleTest, TheDelaysDoubleUpToFiveMinutes) {
  schedule_.TakeNewStores(start_);
  for (const int delay : {1, 2, 4, 8, 16, 32, 64, 128, 256, 300, 300}) EXPECT_EQ(Fail(), seconds(delay));
}

TEST_F(RoundScheduleTest, TheDelaysVaryByThirtyPercent) {
  schedule_.TakeNewStores(start_);
  EXPECT_EQ(Fail(true, 0), milliseconds(700));
  const milliseconds longest = Fail(true, 0.9999);
  EXPECT_TRUE(longest == milliseconds(1299) || longest == milliseconds(1300)) << longest.count();
  for (int i = 0; i < 10; ++i) Fail();
  EXPECT_EQ(Fail(false, 0), seconds(210));
}

TEST_F(RoundScheduleTest, AnAnswerAndANewNetworkAndANewListBeginTheDelaysAnew) {
  schedule_.TakeNewStores(start_);
  EXPECT_EQ(Fail(), seconds(1));
  EXPECT_EQ(Fail(), seconds(2));
  schedule_.TakeNewNetwork(start_);
  EXPECT_EQ(Fail(), seconds(1));
  EXPECT_EQ(Fail(), seconds(2));
  schedule_.TakeNewStores(start_);
  EXPECT_EQ(Fail(), seconds(1));
  ASSERT_TRUE(schedule_.TakeStart(start_ + minutes(1)));
  schedule_.TakeEnd();
  schedule_.TakeOldAge(start_);
  EXPECT_EQ(Fail(), seconds(1));
  schedule_.TakeOldAge(start_);
  EXPECT_EQ(Fail(), seconds(2)) << "age alone does not";
}

TEST_F(RoundScheduleTest, AStoreThatLosesItsAnswerBeginsTheDelaysAnew) {
  schedule_.TakeNewStores(start_);
  for (const int delay : {1, 2, 4}) EXPECT_EQ(Fail(), seconds(delay));
  EXPECT_EQ(Fail(true), seconds(1));
  EXPECT_EQ(Fail(), seconds(2));
}

TEST_F(RoundScheduleTest, OnlyWhatFollowsAFailureIsARepetition) {
  schedule_.TakeNewStores(start_);
  ASSERT_TRUE(schedule_.TakeStart(start_));
  EXPECT_EQ(schedule_.CurrentScope(), RoundSchedule::Scope::All);
  schedule_.TakeFailure(start_, 0.5, false);
  EXPECT_EQ(schedule_.CurrentScope(), RoundSchedule::Scope::All) << "it has not started";
  ASSERT_TRUE(schedule_.TakeStart(start_ + seconds(1)));
  EXPECT_EQ(schedule_.CurrentScope(), RoundSchedule::Scope::WithoutAnswer);
  schedule_.TakeFailure(start_, 0.5, false);
  schedule_.TakeOldAge(start_ + minutes(1));
  ASSERT_TRUE(schedule_.TakeStart(start_ + minutes(1)));
  EXPECT_EQ(schedule_.CurrentScope(), RoundSchedule::Scope::All) << "all are asked";
  schedule_.TakeFailure(start_, 0.5, false);
  ASSERT_TRUE(schedule_.TakeStart(start_ + minutes(1)));
  schedule_.TakeOldAge(start_ + minutes(1));
  ASSERT_TRUE(schedule_.TakeStart(start_ + minutes(1)));
  EXPECT_EQ(schedule_.CurrentScope(), RoundSchedule::Scope::All) << "in place of the one that ran";
}

TEST_F(RoundScheduleTest, FurtherStoresAreAskedAtOnceAndAlone) {
  schedule_.TakeNewStores(start_);
  ASSERT_TRUE(schedule_.TakeStart(start_));
  schedule_.TakeEnd();
  schedule_.TakeFurtherStores(start_ + minutes(1));
  ASSERT_TRUE(schedule_.TakeStart(start_ + minutes(1)));
  EXPECT_EQ(schedule_.CurrentScope(), RoundSchedule::Scope::Further);
  EXPECT_EQ(schedule_.Deadline(), start_ + minutes(1) + seconds(10));
  schedule_.TakeOldAge(start_ + minutes(1));
  ASSERT_TRUE(schedule_.TakeStart(start_ + minutes(1))) << "the others are old";
  EXPECT_EQ(schedule_.CurrentScope(), RoundSchedule::Scope::All);
}

TEST_F(RoundScheduleTest, ARepetitionKeepsItsTimeBehindFurtherStores) {
  schedule_.TakeNewStores(start_);
  for (const int delay : {1, 2, 4}) EXPECT_EQ(Fail(), seconds(delay));
  const auto due = *schedule_.NextDue();
  schedule_.TakeFurtherStores(due - seconds(3));
  ASSERT_TRUE(schedule_.TakeStart(due - seconds(3)));
  EXPECT_EQ(schedule_.CurrentScope(), RoundSchedule::Scope::Further);
  schedule_.TakeFurtherStores(due - seconds(2));
  ASSERT_TRUE(schedule_.TakeStart(due - seconds(2)));
  EXPECT_FALSE(schedule_.TakeStart(due)) << "a round is running";
  EXPECT_EQ(schedule_.TakeFailure(due - seconds(1), 0.5, false), seconds(1));
  EXPECT_EQ(schedule_.NextDue(), due);
  EXPECT_EQ(Fail(), seconds(8)) << "the delays go on";
  EXPECT_EQ(schedule_.CurrentScope(), RoundSchedule::Scope::WithoutAnswer);
}

TEST_F(RoundScheduleTest, ARepetitionThatIsDueFollowsOnFurtherStoresAtOnce) {
  schedule_.TakeNewStores(start_);
  EXPECT_EQ(Fail(), seconds(1));
  schedule_.TakeFurtherStores(start_);
  ASSERT_TRUE(schedule_.TakeStart(start_));
  EXPECT_EQ(schedule_.TakeFailure(start_ + seconds(9), 0.5, false), seconds(0));
  EXPECT_TRUE(schedule_.TakeStart(start_ + seconds(9)));
}

TEST_F(RoundScheduleTest, AFurtherStoreWithoutAnAnswerBeginsTheDelaysAnew) {
  schedule_.TakeNewStores(start_);
  for (const int delay : {1, 2, 4}) EXPECT_EQ(Fail(), seconds(delay));
  schedule_.TakeFurtherStores(start_);
  EXPECT_EQ(Fail(true), seconds(1));
}

TEST_F(RoundScheduleTest, ARepetitionThatNobodyNeedsIsForgotten) {
  schedule_.TakeNewStores(start_);
  EXPECT_EQ(Fail(), seconds(1));
  schedule_.TakeFurtherStores(start_);
  ASSERT_TRUE(schedule_.TakeStart(start_));
  schedule_.TakeEnd();
  EXPECT_FALSE(schedule_.NextDue());
  schedule_.TakeFurtherStores(start_ + minutes(1));
  EXPECT_EQ(Fail(), seconds(1));
}

TEST_F(RoundScheduleTest, ALossTakesBackARepetition) {
  schedule_.TakeNewStores(start_);
  EXPECT_EQ(Fail(), seconds(1));
  schedule_.TakeLoss();
  EXPECT_FALSE(schedule_.NextDue());
}

TEST_F(RoundScheduleTest, OldAgeDoesNotWaitForARepetitionButForARunningRound) {
  schedule_.TakeNewStores(start_);
  ASSERT_TRUE(schedule_.TakeStart(start_));
  schedule_.TakeOldAge(start_);
  EXPECT_FALSE(schedule_.TakeStart(start_)) << "a round is running";
  schedule_.TakeFailure(start_, 0.5, false);
  schedule_.TakeOldAge(start_);
  EXPECT_TRUE(schedule_.TakeStart(start_));
  EXPECT_EQ(schedule_.NextDue(), start_ + seconds(10));
}

TEST_F(RoundScheduleTest, WithoutStoresEverythingIsForgotten) {
  schedule_.TakeNewStores(start_);
  ASSERT_TRUE(schedule_.TakeStart(start_));
  schedule_.TakeFailure(start_, 0.5, false);
  schedule_.TakeNetworkEvent(start_);
  schedule_.Stop();
  EXPECT_FALSE(schedule_.NextDue());
}

}  // namespace

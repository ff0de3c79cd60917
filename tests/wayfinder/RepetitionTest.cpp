#include "libs/Wayfinder/Deciding/Repetition.h"

#include <gtest/gtest.h>

using std::chrono::milliseconds;
using std::chrono::minutes;
using std::chrono::seconds;
using Wayfinding::Repetition;

namespace {

class RepetitionTest : public testing::Test {
 protected:
  // Of a round that begins when it is due, and ends at once.
  milliseconds Fail(double chance = 0.5) {
    const auto due = repetition_.Due().value_or(start_);
    (void)repetition_.Take(due);
    return repetition_.Plan(due, chance);
  }

  Repetition repetition_;
  const Repetition::TimePoint start_{minutes(100)};
};

TEST_F(RepetitionTest, NothingIsDueWhenNothingHappened) {
  EXPECT_FALSE(repetition_.Due());
  EXPECT_FALSE(repetition_.Take(start_));
}

TEST_F(RepetitionTest, IsDueOnceAfterItsDelay) {
  EXPECT_EQ(repetition_.Plan(start_, 0.5), seconds(1));
  EXPECT_EQ(repetition_.Due(), start_ + seconds(1));
  EXPECT_FALSE(repetition_.Take(start_ + milliseconds(999)));
  EXPECT_TRUE(repetition_.Take(start_ + seconds(1)));
  EXPECT_FALSE(repetition_.Take(start_ + seconds(1)));
}

TEST_F(RepetitionTest, TheDelaysDoubleUpToFiveMinutes) {
  for (const int delay : {1, 2, 4, 8, 16, 32, 64, 128, 256, 300, 300}) EXPECT_EQ(Fail(), seconds(delay));
  EXPECT_EQ(repetition_.Attempts(), 11U);
}

TEST_F(RepetitionTest, TheDelaysVaryByThirtyPercent) {
  EXPECT_EQ(Fail(0), milliseconds(700));
  repetition_.Forget();
  const milliseconds longest = Fail(0.9999);
  EXPECT_TRUE(longest == milliseconds(1299) || longest == milliseconds(1300)) << longest.count();
  for (int i = 0; i < 10; ++i) Fail();
  EXPECT_EQ(Fail(0), seconds(210));
}

TEST_F(RepetitionTest, OneThatIsToComeKeepsItsTime) {
  for (const int delay : {1, 2, 4}) EXPECT_EQ(Fail(), seconds(delay));
  const auto due = *repetition_.Due();
  EXPECT_EQ(repetition_.Plan(due - seconds(1), 0.5), seconds(1));
  EXPECT_EQ(repetition_.Due(), due);
  EXPECT_EQ(repetition_.Plan(due + seconds(9), 0.5), seconds(0)) << "it comes at once";
  EXPECT_EQ(Fail(), seconds(8)) << "the delays go on";
}

TEST_F(RepetitionTest, OneThatIsCancelledLetsTheDelaysGoOn) {
  EXPECT_EQ(Fail(), seconds(1));
  repetition_.Cancel();
  EXPECT_FALSE(repetition_.Due());
  EXPECT_EQ(Fail(), seconds(2));
}

TEST_F(RepetitionTest, OneThatIsForgottenBeginsTheDelaysAnew) {
  for (const int delay : {1, 2, 4}) EXPECT_EQ(Fail(), seconds(delay));
  repetition_.Forget();
  EXPECT_FALSE(repetition_.Due());
  EXPECT_EQ(Fail(), seconds(1));
}

}  // namespace

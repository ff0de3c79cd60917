#include "libs/Transfer/TransferWatch.h"

#include <gtest/gtest.h>

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr std::uint64_t kKibibyte = 1024;

// A watch whose time is the test's; the transfer begins at second 0.
class TransferWatchTest : public testing::Test {
 protected:
  bool Header(milliseconds when, std::uint64_t bytes = 20) { return watch_.TakeHeader(At(when), bytes); }
  bool Waiting(milliseconds when) { return watch_.Continues(At(when), std::nullopt); }
  bool Body(milliseconds when, std::uint64_t bytes) { return watch_.Continues(At(when), bytes); }

  // The first second at which the transfer is past a limit, when so much of its body has arrived at each.
  template <typename Arrived>
  int EndOfBody(int begin, Arrived arrived) {
    int second = begin;
    while (second < 1000 && Body(seconds(second), arrived(second - begin))) ++second;
    return second;
  }

  static Transfer::TransferWatch::Time At(milliseconds when) { return Transfer::TransferWatch::Time(when); }

  Transfer::TransferWatch watch_{{}, At(seconds(0))};
};

TEST_F(TransferWatchTest, WaitsNinetySecondsForTheFirstHeader) {
  EXPECT_TRUE(Waiting(milliseconds(89'999)));
  EXPECT_FALSE(Waiting(seconds(90)));
}

TEST_F(TransferWatchTest, WaitsTwoMinutesFromTheFirstHeaderOn) {
  EXPECT_TRUE(Header(seconds(80)));
  EXPECT_TRUE(Header(seconds(150)));  // of a redirect's target
  EXPECT_TRUE(Waiting(milliseconds(199'999)));
  EXPECT_FALSE(Waiting(seconds(200)));
}

TEST_F(TransferWatchTest, ABodyAtOneKibibyteASecondHasTheTwoMinutes) {
  EXPECT_TRUE(Header(seconds(0)));
  EXPECT_EQ(EndOfBody(0, [](int second) { return static_cast<std::uint64_t>(second) * kKibibyte; }), 120);
}

TEST_F(TransferWatchTest, ASlowerBodyHasThirtySeconds) {
  EXPECT_TRUE(Header(seconds(5)));
  EXPECT_EQ(EndOfBody(5, [](int second) { return static_cast<std::uint64_t>(second) * (kKibibyte - 1); }),
            35);
}

TEST_F(TransferWatchTest, ABodyThatNeverBeginsHasThirtySeconds) {
  EXPECT_TRUE(Header(seconds(5)));
  EXPECT_EQ(EndOfBody(5, [](int) { return 0U; }), 35);
}

TEST_F(TransferWatchTest, WhatCameFastAtFirstDoesNotCountLater) {
  EXPECT_TRUE(Header(seconds(0)));
  EXPECT_EQ(EndOfBody(0, [](int second) { return second == 0 ? 0U : 1024 * kKibibyte; }), 31);
}

TEST_F(TransferWatchTest, SmallBurstsAreNoSpeed) {
  EXPECT_TRUE(Header(seconds(0)));
  EXPECT_EQ(EndOfBody(0, [](int second) { return static_cast<std::uint64_t>(second / 10) * 6 * kKibibyte; }),
            30);
}

TEST_F(TransferWatchTest, WaitingForTheNextHeaderIsNotABodysSlowness) {
  EXPECT_TRUE(Header(seconds(0)));
  EXPECT_TRUE(Body(seconds(0), 10));
  EXPECT_TRUE(Waiting(seconds(1)));
  EXPECT_TRUE(Waiting(seconds(60)));
  EXPECT_EQ(EndOfBody(60, [](int) { return 10U; }), 90);
}

TEST_F(TransferWatchTest, TheNextBodyIsMeasuredByItself) {
  EXPECT_TRUE(Header(seconds(0)));
  EXPECT_TRUE(Body(seconds(0), 20 * kKibibyte));
  EXPECT_EQ(EndOfBody(20, [](int second) { return static_cast<std::uint64_t>(second) * kKibibyte; }), 120);
}

TEST_F(TransferWatchTest, ABodyMayHaveSixteenMebibytes) {
  EXPECT_TRUE(Header(seconds(0)));
  EXPECT_TRUE(Body(seconds(1), 16 * 1024 * kKibibyte));
  EXPECT_FALSE(Body(seconds(1), 16 * 1024 * kKibibyte + 1));
}

TEST_F(TransferWatchTest, AllHeadersTogetherMayHaveAQuarterOfAMebibyte) {
  EXPECT_TRUE(Header(seconds(0), 200 * kKibibyte));
  EXPECT_TRUE(Header(seconds(1), 56 * kKibibyte));
  EXPECT_FALSE(Header(seconds(2), 1));
}

}  // namespace

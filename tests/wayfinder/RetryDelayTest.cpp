#include "libs/Wayfinder/Deciding/RetryDelay.h"

#include <gtest/gtest.h>

using std::chrono::milliseconds;
using Wayfinding::RetryDelay;

namespace {

TEST(RetryDelay, DoublesUpToFiveMinutes) {
  constexpr long kSeconds[] = {1, 2, 4, 8, 16, 32, 64, 128, 256, 300, 300};
  for (unsigned int attempt = 0; attempt < std::size(kSeconds); ++attempt) {
    EXPECT_EQ(RetryDelay(attempt, 0.5), milliseconds(kSeconds[attempt] * 1000)) << attempt;
  }
  EXPECT_EQ(RetryDelay(4'000'000'000, 0.5), milliseconds(300'000));
}

TEST(RetryDelay, VariesByThirtyPercent) {
  EXPECT_EQ(RetryDelay(0, 0), milliseconds(700));
  EXPECT_GE(RetryDelay(0, 0.9999), milliseconds(1299));
  EXPECT_LE(RetryDelay(0, 0.9999), milliseconds(1300));
  EXPECT_EQ(RetryDelay(20, 0), milliseconds(210'000));
}

}  // namespace

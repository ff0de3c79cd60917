#include "support/TestFiles.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

// Where the first of the two runs in another process, the second one has nothing to see.
TEST(SameStart, WhatACaseChangesOfItsProcess) {
  const auto before = std::filesystem::current_path();
  ::setenv("SR_TEST_LEFT", "left", 1);
  ::unsetenv("PATH");
  std::filesystem::current_path("/");
  ::umask(0123);
  EXPECT_NE(std::filesystem::current_path(), before);
}

TEST(SameStart, IsPutBackForTheNextOne) {
  EXPECT_EQ(std::getenv("SR_TEST_LEFT"), nullptr);
  EXPECT_NE(std::getenv("PATH"), nullptr);
  EXPECT_NE(std::filesystem::current_path(), "/");
  const mode_t mask = ::umask(0);
  ::umask(mask);
  EXPECT_NE(mask, 0123U);
}

}  // namespace

#include "Process/BackgroundTasks.h"
#include "Process/FileOpenings.h"
#include "Process/MainLoop.h"
#include "support/StoreBuilders.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

using Openings::Outcome;
using ServiceRecords::Opening;

namespace {

class FileOpeningsTest : public testing::Test {
 protected:
  // What becomes of a file that is handled so.
  void Open(std::function<void()> handle) {
    handle_ = std::move(handle);
    openings_.Start({.path = "/a.cr"});
    Agent::MainLoop::Main().RunUntil([this] { return outcome_.has_value(); });
  }

  Agent::BackgroundTasks tasks_;
  std::function<void()> handle_;
  std::optional<Outcome> outcome_;
  std::vector<Opening::Store> stores_;
  Agent::FileOpenings openings_{tasks_, [this](const std::string& /*path*/) { handle_(); },
                                [this](const Opening& opening) {
                                  outcome_ = opening.GravestOutcome();
                                  stores_ = opening.Stores();
                                }};
};

TEST_F(FileOpeningsTest, WhatAFailureLeavesUndecidedIsNotSaved) {
  Open([] {
    Opening::NoteStores({{L"a", TestSupport::Store(L"a", L"https://a")},
                         {L"b", TestSupport::Store(L"b", L"https://b")},
                         {L"c", TestSupport::Store(L"c", L"https://c")}});
    Opening::NoteDeclined(L"a");
    Opening::NoteAccepted(L"b", false);
    throw std::runtime_error("a failure of the test's own");
  });
  EXPECT_EQ(outcome_, Outcome::NotSaved);
  ASSERT_EQ(stores_.size(), 3U);
  EXPECT_EQ(stores_[0].outcome, Outcome::Declined);
  EXPECT_EQ(stores_[1].outcome, Outcome::Added);
  EXPECT_EQ(stores_[2].outcome, Outcome::NotSaved);
  EXPECT_EQ(stores_[1].reason, L"");
  EXPECT_NE(stores_[2].reason, L"");
}

TEST_F(FileOpeningsTest, NeitherIsWhatIsNotHandledAtAll) {
  ASSERT_TRUE(tasks_.Finish(std::chrono::milliseconds(0)));
  Open([] { ADD_FAILURE() << "nothing is begun any more"; });
  EXPECT_EQ(outcome_, Outcome::NotSaved);
}

TEST_F(FileOpeningsTest, AFileWithoutStoresIsNoServiceRecord) {
  Open([] { Opening::NoteStores({}); });
  EXPECT_EQ(outcome_, Outcome::NotAServiceRecord);
}

}  // namespace

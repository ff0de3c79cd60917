#include "MacCSLibrary.h"
#include "support/TraceCapture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

namespace {

using testing::HasSubstr;
using testing::Not;

class MacCSLibraryTest : public testing::Test {
 protected:
  bool TryFromAnotherThread() {
    bool entered = false;
    std::jthread([this, &entered] {
      entered = section_.TryEnter();
      if (entered) section_.Leave();
    }).join();
    return entered;
  }

  TestSupport::TraceCapture trace_;
  CMacCS section_;
};

TEST_F(MacCSLibraryTest, ANewSectionIsReadyForUse) {
  const auto section = CMacCSFactory().ManufactureCriticalSection();
  EXPECT_TRUE(section->Enter());
  EXPECT_TRUE(section->Leave());
  EXPECT_TRUE(section->Create());
  EXPECT_EQ(trace_.Text(), "");
}

TEST_F(MacCSLibraryTest, OneThreadMayEnterTwiceWhileAnotherIsKeptOutWithoutATrace) {
  EXPECT_TRUE(section_.Enter());
  EXPECT_TRUE(section_.Enter());
  EXPECT_FALSE(TryFromAnotherThread());
  EXPECT_TRUE(section_.Leave());
  EXPECT_FALSE(TryFromAnotherThread());
  EXPECT_TRUE(section_.Leave());
  EXPECT_TRUE(TryFromAnotherThread());
  EXPECT_EQ(trace_.Text(), "");
}

TEST_F(MacCSLibraryTest, ADeletedSectionCanNeitherBeEnteredNorLeft) {
  EXPECT_TRUE(section_.Delete());
  EXPECT_FALSE(section_.Enter());
  EXPECT_FALSE(section_.Leave());
  EXPECT_FALSE(section_.TryEnter());
  EXPECT_THAT(trace_.Text(), HasSubstr("[MacCSLibrary.cpp:"));
  EXPECT_THAT(trace_.Text(), HasSubstr("]  virtual bool CMacCS::Enter() no mutex\n"));
  EXPECT_THAT(trace_.Text(), HasSubstr("]  virtual bool CMacCS::Leave() no mutex\n"));
  EXPECT_THAT(trace_.Text(), HasSubstr("]  virtual bool CMacCS::TryEnter() no mutex\n"));
}

TEST_F(MacCSLibraryTest, ALockThatCouldNotEnterDoesNotLeave) {
  EXPECT_TRUE(section_.Delete());
  { const ServiceRecords::CriticalSectionLock lock(section_); }
  EXPECT_THAT(trace_.Text(), HasSubstr("CMacCS::Enter() no mutex\n"));
  EXPECT_THAT(trace_.Text(), Not(HasSubstr("CMacCS::Leave()")));
}

TEST_F(MacCSLibraryTest, ALockIsInsideForAsLongAsItLives) {
  {
    const ServiceRecords::CriticalSectionLock lock(section_);
    EXPECT_FALSE(TryFromAnotherThread());
  }
  EXPECT_TRUE(TryFromAnotherThread());
  EXPECT_EQ(trace_.Text(), "");
}

TEST_F(MacCSLibraryTest, DeletingTwiceFailsSilently) {
  EXPECT_TRUE(section_.Delete());
  EXPECT_FALSE(section_.Delete());
  EXPECT_EQ(trace_.Text(), "");
}

TEST_F(MacCSLibraryTest, ADeletedSectionCanBeCreatedAgain) {
  EXPECT_TRUE(section_.Delete());
  EXPECT_TRUE(section_.Create());
  EXPECT_TRUE(section_.Enter());
  EXPECT_TRUE(section_.Leave());
}

// ThreadSanitizer reports both misuses by itself.
#ifndef __SANITIZE_THREAD__
TEST_F(MacCSLibraryTest, LeavingASectionThatWasNotEnteredIsTraced) {
  EXPECT_FALSE(section_.Leave());
  EXPECT_THAT(trace_.Text(),
              HasSubstr("virtual bool CMacCS::Leave() failed unlocking mutex: Operation not permitted"));
}

TEST_F(MacCSLibraryTest, DeletingAnEnteredSectionIsTracedAndItIsGoneAllTheSame) {
  EXPECT_TRUE(section_.Enter());
  EXPECT_FALSE(section_.Delete());
  EXPECT_THAT(trace_.Text(), HasSubstr("virtual bool CMacCS::Delete() failed destroying mutex: "));
  EXPECT_FALSE(section_.Leave());
  EXPECT_THAT(trace_.Text(), HasSubstr("virtual bool CMacCS::Leave() no mutex\n"));
  EXPECT_TRUE(section_.Create()) << "a section that is gone can be created again";
  EXPECT_TRUE(section_.Enter());
  EXPECT_TRUE(section_.Leave());
}
#endif

}  // namespace

#include "core/ProviderTest.h"

#include <stdexcept>

namespace {

using namespace ServiceRecords;
using namespace TestSupport;

class RemoveStoreTest : public ProviderTest {};

TEST_F(RemoveStoreTest, ARemovedStoreIsGoneFromListFileAndPublication) {
  Hold({Store(L"a", L"https://a"), Store(L"b", L"https://b")});
  provider_.SaveAllStores();
  Forget();
  EXPECT_TRUE(provider_.RemoveStore(L"a"));
  EXPECT_EQ(Ids(provider_.GetStores()), (Wide{L"b"}));
  EXPECT_EQ(Ids(Repository().RestoreStores()), (Wide{L"b"}));
  const auto publications = publications_.All();
  ASSERT_EQ(publications.size(), 1U);
  EXPECT_EQ(Ids(publications.front().stores), (Wide{L"b"}));
  EXPECT_TRUE(publications.front().insideCriticalSection);
  EXPECT_EQ(trace_.Records(), (Records{{0, kProviderFile, "-> RemoveStore started. Service Record ID is: a"},
                                       {2, kProviderFile, "Removed store a"},
                                       {0, kProviderFile, "<- RemoveStore finished"}}));
}

TEST_F(RemoveStoreTest, TheRemovalIsSavedThenPublishedThenRecorded) {
  Hold({Store(L"a", L"https://a")});
  EXPECT_TRUE(provider_.RemoveStore(L"a"));
  EXPECT_TRUE(SavedAndThenPublishedOnce());
  EXPECT_EQ(publications_.All().front().traceRecordsBefore, 1U) << "the first record alone";
}

TEST_F(RemoveStoreTest, TheLockIsLeftWhenARemovalCannotBePublished) {
  Hold({Store(L"a", L"https://a")});
  publications_.FailNext();
  EXPECT_THROW(provider_.RemoveStore(L"a"), std::runtime_error);
  EXPECT_FALSE(InsideCriticalSection());
}

TEST_F(RemoveStoreTest, AnUnknownIdRemovesNothing) {
  Hold({Store(L"a", L"https://a")});
  EXPECT_FALSE(provider_.RemoveStore(L"A"));
  EXPECT_EQ(Ids(provider_.GetStores()), (Wide{L"a"}));
  EXPECT_FALSE(WasSaved());
  EXPECT_TRUE(publications_.All().empty());
  EXPECT_EQ(trace_.Records(), (Records{{0, kProviderFile, "-> RemoveStore started. Service Record ID is: A"},
                                       {2, kProviderFile, "No store removed"},
                                       {0, kProviderFile, "<- RemoveStore finished"}}));
}

TEST_F(RemoveStoreTest, AnEmptyIdIsRefusedEvenWhenAStoreHasIt) {
  Hold({Store(L"", L"https://unnamed")});
  EXPECT_FALSE(provider_.RemoveStore(L""));
  EXPECT_EQ(provider_.GetStores().size(), 1U);
  EXPECT_FALSE(WasSaved());
  EXPECT_EQ(trace_.Records(), (Records{{0, kProviderFile, "-> RemoveStore started. Service Record ID is: "},
                                       {2, kProviderFile, "Service Record Id is empty"},
                                       {0, kProviderFile, "<- RemoveStore finished"}}));
}

}  // namespace

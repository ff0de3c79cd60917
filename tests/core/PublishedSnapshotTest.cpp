#include "core/ProviderTest.h"

#include <atomic>
#include <stdexcept>
#include <thread>

namespace {

using namespace ServiceRecords;
using namespace TestSupport;

// What readers get who wait for nobody.
class PublishedSnapshotTest : public ProviderTest {
 protected:
  PublishedSnapshotTest() {
    Hold({Store(L"a", L"https://a", {Gateway(L"A"), Gateway(L"B")}), Store(L"b", L"https://b")});
    provider_.SaveAllStores();
    Forget();
  }

  Wide PublishedIds() const {
    Wide ids;
    for (const SRStore& store : *provider_.Snapshot()) ids.push_back(store.GetStoreID());
    return ids;
  }
};

TEST_F(PublishedSnapshotTest, ARestoredListIsInIt) {
  EXPECT_TRUE(SRProvider(Parts()).Snapshot()->ByID(L"a")->IsSameThroughout(provider_.GetStores().at(L"a")));
  Repository().SaveStores(Map({Store(L"c", L"https://c")}));
  provider_.RestoreFromRepository();
  EXPECT_EQ(PublishedIds(), (Wide{L"c"}));
}

TEST_F(PublishedSnapshotTest, AListThatCannotBeReadIsEmpty) {
  configuration_.FailReads(true);
  const SRProvider unreadable(Parts());
  configuration_.FailReads(false);
  ASSERT_NE(unreadable.Snapshot(), nullptr);
  EXPECT_TRUE(unreadable.Snapshot()->empty());
}

TEST_F(PublishedSnapshotTest, WhatIsMergedDirectlyIsInItWhenItIsSaved) {
  Hold({Store(L"c", L"https://c")});
  SRStore found;
  EXPECT_TRUE(provider_.GetStoreFromURL(L"https://c", found));
  EXPECT_EQ(Ids(provider_.GetStores()), (Wide{L"a", L"b", L"c"}));
  EXPECT_EQ(PublishedIds(), (Wide{L"a", L"b"}));
  provider_.SaveAllStores();
  EXPECT_EQ(PublishedIds(), (Wide{L"a", L"b", L"c"}));
}

TEST_F(PublishedSnapshotTest, AChosenGatewayIsInItWhenItIsSaved) {
  const auto marked = [](const SRStore& store) { return Marked(store.GetGateways()); };
  ASSERT_TRUE(provider_.SetDefaultGatewayForStoreID(L"a", L"B"));
  SRStore found;
  ASSERT_TRUE(provider_.GetStoreFromURL(L"https://a", found));
  EXPECT_EQ(marked(found), (Wide{L"B"}));
  EXPECT_EQ(marked(*provider_.Snapshot()->ByID(L"a")), (Wide{}));
  provider_.SaveAllStores();
  EXPECT_EQ(marked(*provider_.Snapshot()->ByID(L"a")), (Wide{L"B"}));
}

TEST_F(PublishedSnapshotTest, ALookUpBetweenTwoChangesSeesEachOfThem) {
  SRStore found;
  EXPECT_TRUE(provider_.GetStoreFromURL(L"https://b", found));
  provider_.RemoveStore(L"b");
  EXPECT_FALSE(provider_.GetStoreFromURL(L"https://b", found));
  Hold({Store(L"b", L"https://b")});
  EXPECT_TRUE(provider_.GetStoreFromURL(L"https://b", found));
}

TEST_F(PublishedSnapshotTest, ItIsReplacedAfterTheLastWrite) {
  Wide atLastWrite;
  configuration_.beforeWrite = [&] { atLastWrite = PublishedIds(); };
  provider_.RemoveStore(L"b");
  configuration_.beforeWrite = nullptr;
  EXPECT_EQ(atLastWrite, (Wide{L"a", L"b"}));
  EXPECT_EQ(PublishedIds(), (Wide{L"a"}));
}

TEST_F(PublishedSnapshotTest, ItIsReplacedBeforeThePublication) {
  publications_.FailNext();
  EXPECT_THROW(provider_.RemoveStore(L"b"), std::runtime_error);
  EXPECT_EQ(PublishedIds(), (Wide{L"a"}));
}

TEST_F(PublishedSnapshotTest, ThePublicationIsTheSameOne) {
  provider_.RemoveStore(L"b");
  ASSERT_EQ(publications_.All().size(), 1U);
  EXPECT_EQ(publications_.All().front().snapshot, provider_.Snapshot());
}

TEST_F(PublishedSnapshotTest, ItIsReplacedAlsoWhenTheSaveFails) {
  configuration_.FailWrites(true);
  provider_.RemoveStore(L"b");
  configuration_.FailWrites(false);
  EXPECT_EQ(PublishedIds(), (Wide{L"a"}));
  EXPECT_EQ(provider_.StateOfSavedStores(), SavedStores::State::Unsaved);
}

TEST_F(PublishedSnapshotTest, AnEarlierOneStaysAsItWas) {
  const auto before = provider_.Snapshot();
  provider_.RemoveStore(L"b");
  EXPECT_NE(before->ByID(L"b"), nullptr);
  EXPECT_EQ(before->ByID(L"a"), provider_.Snapshot()->ByID(L"a")) << "the store is not copied";
}

TEST_F(PublishedSnapshotTest, ItHoldsTheBeaconsThatTheSaveAdded) {
  Hold({Store(L"c", L"https://c")});
  provider_.SaveAllStores();
  EXPECT_EQ(Locations(provider_.Snapshot()->ByID(L"c")->Beacons(BeaconType::Internal)), (Wide{L"https://c"}));
}

TEST_F(PublishedSnapshotTest, ReadersDoNotWaitForTheLock) {
  std::size_t asked = 0;
  configuration_.beforeWrite = [&] {
    EXPECT_TRUE(InsideCriticalSection());
    std::jthread([&] {
      EXPECT_EQ(PublishedIds(), (Wide{L"a", L"b"}));
      EXPECT_EQ(provider_.StateOfSavedStores(), SavedStores::State::Good);
      ++asked;
    }).join();
  };
  provider_.RemoveStore(L"b");
  configuration_.beforeWrite = nullptr;
  EXPECT_NE(asked, 0U);
}

TEST_F(PublishedSnapshotTest, ReadersOnOtherThreadsSeeWholeListsOnly) {
  std::atomic<bool> isOver = false;
  std::vector<std::jthread> readers;
  for (int i = 0; i < 3; ++i) {
    readers.emplace_back([&] {
      do {
        const auto snapshot = provider_.Snapshot();
        EXPECT_EQ(snapshot->ByID(L"c") != nullptr, snapshot->ByID(L"d") != nullptr);
        static_cast<void>(provider_.StateOfSavedStores());
      } while (!isOver);
    });
  }
  for (int i = 0; i < 50; ++i) {
    Hold({Store(L"c", L"https://c"), Store(L"d", L"https://d")});
    provider_.SaveAllStores();
    Repository().SaveStores(Map({Store(L"a", L"https://a"), Store(L"b", L"https://b")}));
    provider_.RestoreFromRepository();
  }
  isOver = true;
}

}  // namespace

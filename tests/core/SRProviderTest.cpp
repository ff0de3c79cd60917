#include "core/ProviderTest.h"
#include "fakes/PartsOfTheProcess.h"

#include <atomic>
#include <chrono>
#include <future>
#include <stdexcept>
#include <thread>

namespace {

using namespace ServiceRecords;
using namespace TestSupport;

class SRProviderTest : public ProviderTest {};

TEST_F(SRProviderTest, ANewProviderRestoresTheSavedStoresAndPublishesThemOnce) {
  Repository().SaveStores(Map({Store(L"a", L"https://a"), Store(L"b", L"https://b")}));
  Forget();
  const SRProvider provider(Parts());
  EXPECT_EQ(Ids(provider.GetStores()), (Wide{L"a", L"b"}));
  const auto publications = publications_.All();
  ASSERT_EQ(publications.size(), 1U);
  EXPECT_EQ(Ids(publications.front().stores), (Wide{L"a", L"b"}));
  EXPECT_TRUE(publications.front().insideCriticalSection);
  EXPECT_FALSE(WasSaved());
}

TEST_F(SRProviderTest, AnEmptyRepositoryIsPublishedToo) {
  const SRProvider provider(Parts());
  ASSERT_EQ(publications_.All().size(), 1U);
  EXPECT_TRUE(publications_.All().front().stores.empty());
}

TEST_F(SRProviderTest, RestoringReplacesTheListAndMergesNothing) {
  Repository().SaveStores(Map({Store(L"saved", L"https://saved")}));
  Hold({Store(L"held", L"https://held")});
  provider_.RestoreFromRepository();
  EXPECT_EQ(Ids(provider_.GetStores()), (Wide{L"saved"}));
  ASSERT_EQ(publications_.All().size(), 1U);
  EXPECT_EQ(Ids(publications_.All().front().stores), (Wide{L"saved"}));
  EXPECT_FALSE(WasSaved());
}

TEST(ProviderOfTheProcessTest, IsMadeOfTheRegisteredPartsOnceWhicheverThreadAsksFirst) {
  static std::atomic<int> publications = 0;
  SRProvider::Register(PartsOfTheProcess([] { ++publications; }));
  EXPECT_EQ(publications, 0);
  std::vector<SRProvider*> seen(8);
  {
    std::vector<std::jthread> threads;
    for (auto& provider : seen) threads.emplace_back([&provider] { provider = &SRProvider::Instance(); });
  }
  for (const SRProvider* provider : seen) EXPECT_EQ(provider, &SRProvider::Instance());
  EXPECT_EQ(publications, 1);
  EXPECT_NE(SRProvider::Instance().Snapshot()->ByID(L"a"), nullptr);
}

TEST_F(SRProviderTest, AListHandedOutIsACopy) {
  Hold({Store(L"a", L"https://a")});
  StoreMap copy = provider_.GetStores();
  copy[L"a"].SetStoreURL(L"https://changed");
  copy.erase(L"a");
  EXPECT_EQ(provider_.GetStores().at(L"a").GetStoreURL(), L"https://a");
  EXPECT_FALSE(InsideCriticalSection());
}

TEST_F(SRProviderTest, TheListIsOrderedByPlainCodePoints) {
  Hold({Store(L"b", L""), Store(L"a", L""), Store(L"B", L""), Store(L"\u00E9", L""), Store(L"", L"")});
  EXPECT_EQ(Ids(provider_.GetStores()), (Wide{L"", L"B", L"a", L"b", L"\u00E9"}));
}

TEST_F(SRProviderTest, SavingWritesTheListAndPublishesItUnderTheLock) {
  Hold({Store(L"a", L"https://a", {Gateway(L"GW", L"https://gw")})});
  provider_.SaveAllStores();
  EXPECT_EQ(Ids(Repository().RestoreStores()), (Wide{L"a"}));
  const auto publications = publications_.All();
  ASSERT_EQ(publications.size(), 1U);
  EXPECT_EQ(Ids(publications.front().stores), (Wide{L"a"}));
  EXPECT_TRUE(publications.front().insideCriticalSection);
  EXPECT_FALSE(InsideCriticalSection());
}

TEST_F(SRProviderTest, TheBeaconsThatASaveAddsAreInListFileAndPublicationAtOnce) {
  Hold({Store(L"a", L"https://a", {Gateway(L"GW", L"https://gw")})});
  provider_.SaveAllStores();
  const StoreMap saved = Repository().RestoreStores();
  const auto publications = publications_.All();
  ASSERT_EQ(publications.size(), 1U);
  for (const StoreMap& stores : {provider_.GetStores(), saved, publications.front().stores}) {
    EXPECT_EQ(Locations(stores.at(L"a").Beacons(BeaconType::Internal)), (Wide{L"https://a"}));
    EXPECT_EQ(Locations(stores.at(L"a").Beacons(BeaconType::External)), (Wide{L"https://gw"}));
  }
}

TEST_F(SRProviderTest, PublicationItselfAddsNothing) {
  configuration_.SetString(L"SR\\Store\\a\\Addr", L"https://a");
  configuration_.CreateContainer(L"SR\\Store\\a\\Gateways\\GW");
  provider_.RestoreFromRepository();
  const auto publications = publications_.All();
  ASSERT_EQ(publications.size(), 1U);
  for (const StoreMap& stores : {provider_.GetStores(), publications.front().stores}) {
    EXPECT_TRUE(stores.at(L"a").Beacons(BeaconType::Internal).empty());
    EXPECT_TRUE(stores.at(L"a").Beacons(BeaconType::External).empty());
  }
}

TEST_F(SRProviderTest, TheListIsSavedBeforeItIsPublished) {
  Hold({Store(L"a", L"https://a")});
  provider_.SaveAllStores();
  EXPECT_TRUE(SavedAndThenPublishedOnce());
}

TEST_F(SRProviderTest, TheLockIsLeftByWhateverThrowsInsideIt) {
  Hold({Store(L"a", L"https://a")});
  publications_.FailNext();
  EXPECT_THROW(provider_.RestoreFromRepository(), std::runtime_error);
  EXPECT_FALSE(InsideCriticalSection());
  publications_.FailNext();
  EXPECT_THROW(provider_.SaveAllStores(), std::runtime_error);
  EXPECT_FALSE(InsideCriticalSection());
  publications_.FailNext();
  EXPECT_THROW(SRProvider{Parts()}, std::runtime_error);
  EXPECT_FALSE(InsideCriticalSection());
}

TEST_F(SRProviderTest, TheNotificationObjectIsTheLastOneGiven) {
  MockNotifications other;
  provider_.InitNotificationManager(&other);
  EXPECT_EQ(provider_.Notification(), &other);
  EXPECT_EQ(trace_.Records(), Records{});
}

TEST_F(SRProviderTest, AMissingNotificationObjectIsWrittenInTwoRecords) {
  provider_.InitNotificationManager(nullptr);
  EXPECT_EQ(provider_.Notification(), nullptr);
  EXPECT_EQ(trace_.Records(),
            (Records{{2, kProviderFile, "Notification manager for Service Records is not initialized."},
                     {2, kProviderFile, "Service Records logic will not work correctly."}}));
}

TEST_F(SRProviderTest, WorkThatMustNotMeetASaveWaitsUntilTheSaveIsWhole) {
  Hold({Store(L"a", L"https://a", {Gateway(L"GW")}), Store(L"b", L"https://b")});
  std::future<int> writesAtWork;
  configuration_.beforeWrite = [&] {
    if (writesAtWork.valid()) return;
    writesAtWork = std::async(std::launch::async, [&] {
      int writes = 0;
      SRProvider::WhileNotSaving([&] { writes = configuration_.Writes(); });
      return writes;
    });
    EXPECT_EQ(writesAtWork.wait_for(std::chrono::milliseconds(200)), std::future_status::timeout);
  };
  provider_.SaveAllStores();
  configuration_.beforeWrite = nullptr;
  EXPECT_EQ(writesAtWork.get(), configuration_.Writes());
}

TEST_F(SRProviderTest, WorkThatMustNotMeetASaveDoesNotWaitForADialog) {
  Hold({Store(L"a", L"https://a")});
  bool workDone = false;
  EXPECT_CALL(notifications_, ShowStoreReplaceDialog).WillOnce([&] {
    std::jthread([&] { SRProvider::WhileNotSaving([&] { workDone = true; }); }).join();
    return 0;
  });
  Hold({Store(L"a", L"https://other")});
  EXPECT_TRUE(workDone);
}

}  // namespace

#include "core/ProviderTest.h"
#include "support/TemporaryFolder.h"

#include <fstream>
#include <future>
#include <new>
#include <thread>
#include <utility>

namespace {

using namespace ServiceRecords;
using namespace TestSupport;
using State = SavedStores::State;
using testing::ElementsAre;
using testing::IsEmpty;

// A provider whose saved list cannot be written, or could not be read, for a time that the test decides.
class ProviderSavingTest : public ProviderTest {
 protected:
  using Delays = std::vector<std::chrono::seconds>;

  ProviderSavingTest() {
    provider_.RetryWith(Timer(), [this] { ReadAtLast(); });
  }

  SavedStores::StartTimer Timer() {
    return [this](std::chrono::seconds delay) {
      EXPECT_TRUE(InsideCriticalSection());
      delays_.push_back(delay);
    };
  }

  void ReadAtLast() {
    ++timesReadAtLast_;
    EXPECT_FALSE(InsideCriticalSection());
    EXPECT_EQ(Ids(provider_.GetStores()), (Wide{L"a"}));
  }

  // Each try comes when its time is over.
  void LetTimePass(int tries) {
    for (int i = 0; i < tries; ++i) provider_.TryAgain();
  }

  Wide SavedIds() { return Ids(Repository().RestoreStores()); }

  static Delays Seconds(std::initializer_list<int> numbers) {
    Delays delays;
    for (const int number : numbers) delays.emplace_back(number);
    return delays;
  }

  void HoldSaved(const std::vector<SRStore>& stores) {
    Hold(stores);
    provider_.SaveAllStores();
    Forget();
  }

  Delays delays_;
  int timesReadAtLast_ = 0;
};

TEST_F(ProviderSavingTest, ASaveThatSucceedsNeedsNoOther) {
  HoldSaved({Store(L"a", L"https://a")});
  LetTimePass(1);
  EXPECT_EQ(provider_.StateOfSavedStores(), State::Good);
  EXPECT_FALSE(WasSaved());
  EXPECT_EQ(delays_, Delays{});
  EXPECT_THAT(systemLog_.TakeLines(), IsEmpty());
}

TEST_F(ProviderSavingTest, ASaveThatFailsIsTriedAgainAfterLongerAndLongerTimesUntilItSucceeds) {
  HoldSaved({Store(L"a", L"https://a"), Store(L"b", L"https://b")});
  configuration_.FailWrites(true);
  EXPECT_TRUE(provider_.RemoveStore(L"a")) << "the answer does not tell";
  EXPECT_EQ(provider_.StateOfSavedStores(), State::Unsaved);
  EXPECT_EQ(Ids(publications_.All().back().stores), (Wide{L"b"}));
  LetTimePass(10);
  EXPECT_EQ(delays_, Seconds({1, 2, 4, 8, 16, 32, 64, 128, 256, 300, 300}));
  EXPECT_EQ(SavedIds(), (Wide{L"a", L"b"}));
  configuration_.FailWrites(false);
  LetTimePass(1);
  EXPECT_EQ(provider_.StateOfSavedStores(), State::Good);
  EXPECT_EQ(SavedIds(), (Wide{L"b"}));
  const std::size_t asked = delays_.size();
  LetTimePass(1);
  EXPECT_EQ(delays_.size(), asked);
}

TEST_F(ProviderSavingTest, ASaveThatThrowsIsOneThatFailsWhereverItDoes) {
  HoldSaved({Store(L"b", L"https://b", {Gateway(L"GW")})});
  int calls = 0;
  for (int throwing = 1; throwing == calls + 1; ++throwing) {
    HoldSaved({Store(L"a", L"https://a")});
    calls = 0;
    configuration_.beforeWrite = [&] {
      if (++calls == throwing) throw std::bad_alloc();
    };
    EXPECT_TRUE(provider_.RemoveStore(L"a")) << throwing;
    configuration_.beforeWrite = nullptr;
    if (calls < throwing) break;
    EXPECT_EQ(provider_.StateOfSavedStores(), State::Unsaved);
    EXPECT_EQ(provider_.Snapshot()->ByID(L"a"), nullptr);
    ASSERT_EQ(publications_.All().size(), 1U);
    EXPECT_EQ(Ids(publications_.All().front().stores), (Wide{L"b"}));
    EXPECT_THAT(systemLog_.TakeLines(),
                ElementsAre("the stores cannot be saved, which is tried again: std::bad_alloc"));
    EXPECT_EQ(std::exchange(delays_, {}), Seconds({1}));
    LetTimePass(1);
    EXPECT_EQ(provider_.StateOfSavedStores(), State::Good);
    EXPECT_EQ(SavedIds(), (Wide{L"b"}));
    delays_.clear();
  }
  EXPECT_GT(calls, 4) << "at each text, and at the write of them all";
}

TEST_F(ProviderSavingTest, OneMoreTryAsksForNoOtherAndIsMadeOnlyWhereTheListIsUnsaved) {
  HoldSaved({Store(L"a", L"https://a"), Store(L"b", L"https://b")});
  provider_.SaveWhatIsUnsaved();
  EXPECT_FALSE(WasSaved());
  configuration_.FailWrites(true);
  provider_.RemoveStore(L"a");
  provider_.SaveWhatIsUnsaved();
  EXPECT_EQ(provider_.StateOfSavedStores(), State::Unsaved);
  configuration_.FailWrites(false);
  bool inside = true;
  configuration_.beforeWrite = [&] { inside = inside && InsideCriticalSection(); };
  provider_.SaveWhatIsUnsaved();
  configuration_.beforeWrite = nullptr;
  EXPECT_TRUE(inside);
  EXPECT_EQ(provider_.StateOfSavedStores(), State::Good);
  EXPECT_EQ(SavedIds(), (Wide{L"b"}));
  EXPECT_EQ(delays_, Seconds({1}));
}

TEST_F(ProviderSavingTest, AFailingTimeIsSaidOnceInTheSystemLog) {
  HoldSaved({Store(L"a", L"https://a"), Store(L"b", L"https://b"), Store(L"c", L"https://c")});
  for (const wchar_t* id : {L"a", L"b"}) {
    configuration_.FailWrites(true);
    provider_.RemoveStore(id);
    LetTimePass(3);
    provider_.SaveAllStores();
    EXPECT_THAT(systemLog_.TakeLines(),
                ElementsAre("the stores cannot be saved, which is tried again: the file cannot be written"));
    configuration_.FailWrites(false);
    LetTimePass(1);
    EXPECT_THAT(systemLog_.TakeLines(), IsEmpty());
  }
}

TEST_F(ProviderSavingTest, TheNextFailingTimeBeginsWithOneSecondAgain) {
  HoldSaved({Store(L"a", L"https://a"), Store(L"b", L"https://b")});
  configuration_.FailWrites(true);
  provider_.RemoveStore(L"a");
  LetTimePass(2);
  configuration_.FailWrites(false);
  provider_.SaveAllStores();
  delays_.clear();
  configuration_.FailWrites(true);
  provider_.RemoveStore(L"b");
  EXPECT_EQ(delays_, Seconds({1}));
}

TEST_F(ProviderSavingTest, TheNextChangeSavesWhatWasNotSaved) {
  HoldSaved({Store(L"a", L"https://a"), Store(L"b", L"https://b"), Store(L"c", L"https://c")});
  configuration_.FailWrites(true);
  provider_.RemoveStore(L"a");
  configuration_.FailWrites(false);
  provider_.RemoveStore(L"b");
  EXPECT_EQ(provider_.StateOfSavedStores(), State::Good);
  EXPECT_EQ(SavedIds(), (Wide{L"c"}));
  EXPECT_EQ(delays_, Seconds({1})) << "a change asks for no try of its own";
}

TEST_F(ProviderSavingTest, ATryIsMadeUnderTheLockAndPublishesNothing) {
  HoldSaved({Store(L"a", L"https://a")});
  configuration_.FailWrites(true);
  provider_.SaveAllStores();
  configuration_.FailWrites(false);
  Forget();
  bool inside = true;
  configuration_.beforeWrite = [&] { inside = inside && InsideCriticalSection(); };
  LetTimePass(1);
  configuration_.beforeWrite = nullptr;
  EXPECT_TRUE(inside);
  EXPECT_TRUE(WasSaved());
  EXPECT_TRUE(publications_.All().empty());
  EXPECT_FALSE(InsideCriticalSection());
}

TEST_F(ProviderSavingTest, TheProcessDoesNotEndInTheMiddleOfASave) {
  HoldSaved({Store(L"a", L"https://a")});
  bool ended = false;  // guarded by the lock that the end waits for
  std::future<void> end;
  configuration_.beforeWrite = [&] {
    if (!end.valid()) {
      end = std::async(std::launch::async,
                       [&ended] { SRProvider::WhileNotSaving([&ended] { ended = true; }); });
      static_cast<void>(end.wait_for(std::chrono::milliseconds(100)));
    }
    EXPECT_FALSE(ended);
  };
  provider_.SaveAllStores();
  configuration_.beforeWrite = nullptr;
  end.get();
  EXPECT_TRUE(ended);
}

TEST_F(ProviderSavingTest, EveryFailureIsTraced) {
  HoldSaved({Store(L"a", L"https://a")});
  configuration_.FailWrites(true);
  provider_.SaveAllStores();
  LetTimePass(1);
  const TraceRecord failure{2, kProviderFile,
                            "the stores cannot be saved, which is tried again: the file cannot be written"};
  EXPECT_EQ(trace_.RecordsStartingWith("the stores cannot"), (Records{failure, failure}));
}

// A provider that starts while the saved list cannot be read.
class UnreadableListTest : public ProviderSavingTest {
 protected:
  UnreadableListTest() {
    Repository().SaveStores(stores_);
    configuration_.FailReads(true);
    provider_.RestoreFromRepository();
    Forget();
  }

  bool Update(const std::wstring& id) {
    bool updated = true;
    provider_.InboundUpdate(DiscoveryDocument(Service(id, L"", InServiceRecordNamespace())), updated);
    return updated;
  }

  void ExpectRefusal(const wchar_t* title) {
    EXPECT_CALL(notifications_, ShowSRErrorDialog(std::wstring(title), std::wstring(L"message 1712")));
  }

  StoreMap stores_ = Map({Store(L"a", L"https://a", {Gateway(L"GW", L"https://gw")})});
};

TEST_F(UnreadableListTest, ReadersGetTheEmptyList) {
  SRStore store;
  EXPECT_TRUE(provider_.GetStores().empty());
  EXPECT_FALSE(provider_.GetStoreFromURL(L"https://a", store));
  EXPECT_EQ(provider_.StateOfSavedStores(), State::Unreadable);
}

TEST_F(UnreadableListTest, NothingIsChangedOrSaved) {
  EXPECT_FALSE(provider_.RemoveStore(L"a"));
  EXPECT_EQ(trace_.RecordsStartingWith("...The saved stores"),
            (Records{{2, kProviderFile, "...The saved stores cannot be read, so nothing is changed."}}));
  EXPECT_FALSE(provider_.SetDefaultGatewayForStoreID(L"a", L"GW"));
  EXPECT_FALSE(provider_.SetDefaultGatewayForStore(L"https://a", L"GW"));
  provider_.SaveAllStores();
  provider_.SaveWhatIsUnsaved();
  ExpectRefusal(L"message 1608");
  EXPECT_FALSE(Update(L"new"));
  EXPECT_FALSE(WasSaved());
  EXPECT_TRUE(provider_.GetStores().empty());
  configuration_.FailReads(false);
  EXPECT_EQ(SavedIds(), (Wide{L"a"}));
}

TEST_F(UnreadableListTest, TheListIsReadAgainAfterLongerAndLongerTimesAndPublished) {
  LetTimePass(3);
  EXPECT_EQ(delays_, Seconds({1, 2, 4, 8}));
  EXPECT_THAT(
      systemLog_.TakeLines(),
      ElementsAre("the stores cannot be read, and are not changed until they can: the file cannot be read"));
  Forget();
  configuration_.FailReads(false);
  LetTimePass(1);
  EXPECT_EQ(Ids(provider_.GetStores()), (Wide{L"a"}));
  ASSERT_EQ(publications_.All().size(), 1U);
  EXPECT_EQ(Ids(publications_.All().front().stores), (Wide{L"a"}));
  EXPECT_TRUE(publications_.All().front().insideCriticalSection);
  EXPECT_FALSE(WasSaved());
  EXPECT_EQ(provider_.StateOfSavedStores(), State::Good);
  EXPECT_EQ(timesReadAtLast_, 1);
}

TEST_F(UnreadableListTest, AListThatAChangeHasReadIsToldOnce) {
  EXPECT_FALSE(provider_.RemoveStore(L"unknown"));
  EXPECT_EQ(timesReadAtLast_, 0);
  configuration_.FailReads(false);
  EXPECT_FALSE(provider_.RemoveStore(L"unknown"));
  EXPECT_EQ(timesReadAtLast_, 1);
  LetTimePass(1);
  EXPECT_FALSE(provider_.RemoveStore(L"unknown"));
  EXPECT_EQ(timesReadAtLast_, 1);
}

// On whichever thread it is read, others ask for the empty list without waiting.
TEST_F(UnreadableListTest, ReadersDoNotWaitForTheDisk) {
  std::size_t asked = 0;
  configuration_.beforeRead = [&] {
    ASSERT_FALSE(InsideCriticalSection());
    std::jthread([&] { asked += provider_.GetStores().empty() ? 1 : 0; }).join();
  };
  LetTimePass(1);
  EXPECT_FALSE(provider_.RemoveStore(L"a"));
  EXPECT_FALSE(provider_.SetDefaultGatewayForStoreID(L"a", L"GW"));
  provider_.SaveAllStores();
  configuration_.beforeRead = nullptr;
  EXPECT_EQ(asked, 4U);
}

TEST_F(UnreadableListTest, WhatAnotherThreadHasReadAndChangedMeanwhileIsNotReadOverIt) {
  configuration_.FailReads(false);
  bool isFirst = true;
  configuration_.beforeRead = [&] {
    if (std::exchange(isFirst, false)) std::jthread([&] { EXPECT_TRUE(Update(L"new")); }).join();
  };
  LetTimePass(1);
  configuration_.beforeRead = nullptr;
  EXPECT_EQ(Ids(provider_.GetStores()), (Wide{L"a", L"new"}));
  EXPECT_EQ(timesReadAtLast_, 1);
}

TEST_F(UnreadableListTest, ATimerThatComesLaterIsStartedForTheTryThatIsWanted) {
  SRProvider late(Parts());
  EXPECT_EQ(late.StateOfSavedStores(), State::Unreadable);
  delays_.clear();
  late.RetryWith(Timer(), nullptr);
  EXPECT_EQ(delays_, Seconds({1}));
}

TEST_F(UnreadableListTest, TheNextRemovalReadsTheListFirst) {
  configuration_.FailReads(false);
  EXPECT_TRUE(provider_.RemoveStore(L"a"));
  EXPECT_TRUE(SavedIds().empty());
}

TEST_F(UnreadableListTest, TheNextDocumentIsMergedIntoTheListThatWasReadFirst) {
  configuration_.FailReads(false);
  EXPECT_TRUE(Update(L"new"));
  EXPECT_EQ(SavedIds(), (Wide{L"a", L"new"}));
}

TEST_F(UnreadableListTest, TheNextChoiceOfAGatewayReadsTheListFirst) {
  configuration_.FailReads(false);
  EXPECT_TRUE(provider_.SetDefaultGatewayForStoreID(L"a", L"GW"));
}

TEST_F(UnreadableListTest, AnOpenedFileIsRefusedBeforeTheUserIsAskedToTrustIt) {
  const TemporaryFolder folder;
  const auto file = folder.Path() / "opened.cr";
  std::ofstream(file) << Narrow(ServiceRecord(Service(L"new", L"")));
  StoreMap accepted = stores_;
  ExpectRefusal(L"message 1600");
  provider_.OutboundUserConfirm(L"\"" + file.wstring() + L"\"", accepted);
  EXPECT_TRUE(accepted.empty());
  EXPECT_TRUE(provider_.GetStores().empty());
}

TEST_F(UnreadableListTest, FetchedDocumentsAreRefused) {
  location_.AnswerWith(1);
  server_.Answer(L"https://a", DiscoveryDocument(Service(L"a", L"", InServiceRecordNamespace())));
  bool updated = true;
  ExpectRefusal(L"message 1600");
  provider_.OutboundDSConfirm(stores_, updated);
  EXPECT_FALSE(updated);
  EXPECT_FALSE(WasSaved());
  EXPECT_TRUE(provider_.GetStores().empty());
}

}  // namespace

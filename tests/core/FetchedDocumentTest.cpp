#include "core/ProviderTest.h"

namespace {

using namespace ServiceRecords;
using namespace std::string_literals;
using namespace TestSupport;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

// What the discovery document of one store may do to the others. "asked" lies on asked.example, "other" on
// other.example.
class FetchedDocumentTest : public ProviderTest {
 protected:
  FetchedDocumentTest() {
    location_.AnswerWith(1);
    Hold({asked_, Store(L"other", L"https://other.example/discovery")});
  }

  static std::wstring At(const std::wstring& id, const std::wstring& address) {
    return ServiceAt(id, address, L"", InServiceRecordNamespace());
  }

  // What the asked store's server says; whether the list changed by it.
  bool Answers(const std::wstring& services, const std::function<void()>& meanwhile = nullptr) {
    server_.Answer(asked_.GetStoreURL(), {200, DiscoveryDocument(services), L"", L"", meanwhile});
    return Confirm({asked_});
  }
  bool Confirm(const std::vector<SRStore>& accepted) {
    StoreMap stores = Map(accepted);
    bool updated = false;
    provider_.OutboundDSConfirm(stores, updated);
    return updated;
  }

  std::wstring URL(const std::wstring& id) {
    const StoreMap stores = provider_.GetStores();
    const auto store = stores.find(id);
    return store == stores.end() ? L"none" : store->second.GetStoreURL();
  }

  static std::string Foreign(const std::string& id) {
    return "Passed over store " + id +
           " in the discovery document of store asked: it belongs on another server";
  }
  Records PassedOver() { return trace_.RecordsStartingWith("...Passed over"); }

  const SRStore asked_ = Store(L"asked", L"https://asked.example/a/discovery");
};

TEST_F(FetchedDocumentTest, MayChangeTheStoreThatWasAsked) {
  EXPECT_TRUE(Answers(At(L"asked", L"https://asked.example/b")));
  EXPECT_EQ(URL(L"asked"), L"https://asked.example/b");
  EXPECT_THAT(PassedOver(), IsEmpty());
  EXPECT_THAT(systemLog_.TakeLines(), IsEmpty());
}

TEST_F(FetchedDocumentTest, MayChangeAnotherStoreOfTheSameServer) {
  Hold({Store(L"beside", L"HTTPS://Asked.Example:443/c")});
  EXPECT_TRUE(Answers(At(L"beside", L"https://asked.example/d")));
  EXPECT_EQ(URL(L"beside"), L"https://asked.example/d");
}

TEST_F(FetchedDocumentTest, MayInsertStoresOnItsServerAndOnServersOfTheirOwn) {
  EXPECT_TRUE(Answers(At(L"n1", L"https://asked.example/n") + At(L"n2", L"https://new.example/1") +
                      At(L"n3", L"https://new.example/2")));
  EXPECT_EQ(Ids(provider_.GetStores()), (Wide{L"asked", L"n1", L"n2", L"n3", L"other"}));
  EXPECT_THAT(PassedOver(), IsEmpty());
}

TEST_F(FetchedDocumentTest, MayMoveItsStoreToAServerOfItsOwn) {
  EXPECT_TRUE(Answers(At(L"asked", L"https://new.example/a")));
  EXPECT_EQ(URL(L"asked"), L"https://new.example/a");
}

TEST_F(FetchedDocumentTest, ChangesNoStoreOfAnotherServer) {
  EXPECT_FALSE(Answers(At(L"other", L"https://asked.example/stolen")));
  EXPECT_EQ(URL(L"other"), L"https://other.example/discovery");
  EXPECT_FALSE(WasSaved());
  EXPECT_EQ(PassedOver(), (Records{{2, kProviderFile, "..." + Foreign("other")}}));
  EXPECT_THAT(systemLog_.TakeLines(), ElementsAre(Foreign("other")));
}

TEST_F(FetchedDocumentTest, ChangesNoStoreOfAnotherServerAlsoWhereItLeavesItsAddress) {
  EXPECT_FALSE(Answers(ServiceAt(L"other", L"https://other.example/discovery",
                                 L"<Gateways>" + GatewayElement(L"evil") + L"</Gateways>",
                                 InServiceRecordNamespace())));
  EXPECT_THAT(provider_.GetStores().at(L"other").GetGateways(), IsEmpty());
}

TEST_F(FetchedDocumentTest, InsertsNoStoreOnTheServerOfAnother) {
  EXPECT_FALSE(Answers(At(L"new", L"https://OTHER.example:443/x")));
  EXPECT_EQ(URL(L"new"), L"none");
  EXPECT_THAT(systemLog_.TakeLines(), ElementsAre(Foreign("new")));
}

TEST_F(FetchedDocumentTest, SpellsNoServerOfAnotherSoThatItPassesForADifferentOne) {
  Hold({Store(L"named", L"https://b\u00FCcher.example/x")});
  EXPECT_FALSE(Answers(At(L"n1", L"https://other.example:/x") + At(L"n2", L"https://%6Fther.example/x") +
                       At(L"n3", L"https://xn--bcher-kva.example/y") +
                       At(L"n4", L"https://other.example./x")));
  EXPECT_THAT(systemLog_.TakeLines(),
              ElementsAre(Foreign("n1"), Foreign("n2"), Foreign("n3"), Foreign("n4")));
}

// Where no request would be sent, the address tells the server all the same.
TEST_F(FetchedDocumentTest, ServersWithoutAReadableAddressAreDifferentOnes) {
  Hold({Store(L"odd", L"https://me@odd.example/x")});
  EXPECT_TRUE(Answers(At(L"n1", L"https://me@odd.example/y") + At(L"n2", L"https://me@new.example/y")));
  EXPECT_EQ(Ids(provider_.GetStores()), (Wide{L"asked", L"n2", L"odd", L"other"}));
  EXPECT_THAT(systemLog_.TakeLines(), ElementsAre(Foreign("n1")));
}

TEST_F(FetchedDocumentTest, MovesNoStoreOntoTheServerOfAnother) {
  EXPECT_FALSE(Answers(At(L"asked", L"https://other.example/a")));
  EXPECT_EQ(URL(L"asked"), asked_.GetStoreURL());
  EXPECT_THAT(systemLog_.TakeLines(), ElementsAre(Foreign("asked")));
}

TEST_F(FetchedDocumentTest, SchemeAndPortBelongToTheServer) {
  Hold({Store(L"plain", L"http://asked.example/a"), Store(L"port", L"https://asked.example:8443/a")});
  EXPECT_TRUE(Answers(At(L"asked", L"https://asked.example/b") + At(L"plain", L"http://asked.example/b") +
                      At(L"port", L"https://asked.example:8443/b")));
  EXPECT_EQ(URL(L"asked"), L"https://asked.example/b");
  EXPECT_EQ(URL(L"plain"), L"http://asked.example/a");
  EXPECT_EQ(URL(L"port"), L"https://asked.example:8443/a");
  EXPECT_THAT(systemLog_.TakeLines(), ElementsAre(Foreign("plain"), Foreign("port")));
}

TEST_F(FetchedDocumentTest, WhatItHasASayInIsTakenBesideWhatIsPassedOver) {
  EXPECT_TRUE(Answers(At(L"other", L"https://asked.example/stolen") + At(L"zone", L"https://new.example")));
  EXPECT_EQ(Ids(provider_.GetStores()), (Wide{L"asked", L"other", L"zone"}));
  EXPECT_EQ(URL(L"other"), L"https://other.example/discovery");
}

// The accepted stores hold the address of the file, the list the one that the user has kept.
TEST_F(FetchedDocumentTest, DoesNotReplaceAStoreWhoseReplacementTheUserHasDeclined) {
  const SRStore declined = Store(L"other", L"https://evil.example/discovery");
  server_.Answer(declined.GetStoreURL(), DiscoveryDocument(At(L"other", L"https://evil.example/discovery")));
  EXPECT_FALSE(Confirm({declined}));
  EXPECT_EQ(URL(L"other"), L"https://other.example/discovery");
  EXPECT_EQ(PassedOver().size(), 1U);
}

TEST_F(FetchedDocumentTest, ThroughAGatewaySpeaksForTheStoreThatWasAskedFor) {
  location_.AnswerWith(2);
  FakeWarden warden;
  const SRStore behind =
      Store(L"behind", L"https://behind.example/discovery", {Gateway(L"gw", L"https://other.example")});
  Hold({behind});
  warden.Send(L"https://other.example/https/behind.example/discovery");
  server_.Answer(L"https://other.example/https/behind.example/discovery",
                 DiscoveryDocument(At(L"behind", L"https://behind.example/new") +
                                   At(L"other", L"https://other.example/new")));
  EXPECT_TRUE(Confirm({behind}));
  EXPECT_EQ(URL(L"behind"), L"https://behind.example/new");
  EXPECT_EQ(URL(L"other"), L"https://other.example/discovery");
}

// What an earlier document has inserted is held when the next one is merged.
TEST_F(FetchedDocumentTest, IsJudgedByTheListAsTheDocumentsBeforeItHaveLeftIt) {
  const SRStore second = Store(L"second", L"https://second.example");
  Hold({second});
  server_.Answer(second.GetStoreURL(), DiscoveryDocument(At(L"new", L"https://second.example/new")));
  server_.Answer(asked_.GetStoreURL(), DiscoveryDocument(At(L"new", L"https://new.example/first")));
  EXPECT_TRUE(Confirm({asked_, second}));
  EXPECT_EQ(URL(L"new"), L"https://new.example/first");
}

TEST_F(FetchedDocumentTest, AHandedInDocumentChangesWhatItNames) {
  bool updated = false;
  provider_.InboundUpdate(DiscoveryDocument(At(L"other", L"https://asked.example/x")), updated);
  EXPECT_TRUE(updated);
  EXPECT_EQ(URL(L"other"), L"https://asked.example/x");
}

TEST_F(FetchedDocumentTest, DocumentsMergedDirectlyChangeWhatTheyName) {
  bool updated = false;
  provider_.MergeDiscoveryDocs({}, {DiscoveryDocument(At(L"other", L"https://asked.example/x"))}, updated);
  EXPECT_TRUE(updated);
  EXPECT_EQ(URL(L"other"), L"https://asked.example/x");
}

TEST_F(FetchedDocumentTest, AStoreThatIsDeletedMeanwhileStaysDeleted) {
  EXPECT_TRUE(Answers(At(L"asked", L"https://asked.example/b") + At(L"new", L"https://new.example"),
                      [this] { EXPECT_TRUE(provider_.RemoveStore(L"asked")); }));
  EXPECT_EQ(Ids(provider_.GetStores()), (Wide{L"new", L"other"}));
  EXPECT_EQ(PassedOver(),
            (Records{{2, kProviderFile,
                      "...Passed over store asked in the discovery document of store asked: it was deleted "
                      "meanwhile"}}));
  EXPECT_THAT(systemLog_.TakeLines(), IsEmpty());
}

TEST_F(FetchedDocumentTest, AStoreThatWasNeverHeldIsInserted) {
  EXPECT_TRUE(provider_.RemoveStore(L"asked")) << "before the fetch";
  EXPECT_TRUE(Answers(At(L"asked", L"https://asked.example/b")));
  EXPECT_EQ(URL(L"asked"), L"https://asked.example/b");
}

TEST_F(FetchedDocumentTest, AnAttemptToDeleteWhatIsNotHeldIsNoRemoval) {
  EXPECT_TRUE(
      Answers(At(L"new", L"https://new.example"), [this] { EXPECT_FALSE(provider_.RemoveStore(L"new")); }));
  EXPECT_EQ(URL(L"new"), L"https://new.example");
}

TEST_F(FetchedDocumentTest, ADeletionIsForgottenWithTheFetchThatItCameInto) {
  EXPECT_FALSE(Answers(At(L"asked", L"https://asked.example/b"),
                       [this] { EXPECT_TRUE(provider_.RemoveStore(L"asked")); }));
  EXPECT_TRUE(Answers(At(L"asked", L"https://asked.example/b")));
  EXPECT_EQ(URL(L"asked"), L"https://asked.example/b");
}

}  // namespace

#include "core/ProviderTest.h"

#include <stdexcept>

namespace {

using namespace ServiceRecords;
using namespace std::string_literals;
using namespace TestSupport;

class OutboundDSConfirmTest : public ProviderTest {
 protected:
  OutboundDSConfirmTest() { location_.AnswerWith(1); }

  static std::wstring Address(const std::wstring& id) {
    return L"https://" + id + L".example/store/discovery";
  }
  static SRStore Accepted(const std::wstring& id) { return Store(id, Address(id)); }
  // The discovery document of one store, with a gateway and beacons.
  static std::wstring Document(const std::wstring& id) {
    return DiscoveryDocument(Service(id,
                                     L"<Gateways>" + GatewayElement(L"gw") +
                                         L"</Gateways><Internal><Beacon>https://in</Beacon></Internal>",
                                     InServiceRecordNamespace()));
  }

  // Whether the flow says that the list changed.
  bool Confirm(StoreMap accepted) {
    bool updated = true;
    provider_.OutboundDSConfirm(accepted, updated);
    return updated;
  }
  bool Verify(const std::wstring& id) {
    SRStore store = Accepted(id);
    return provider_.VerifyDSTrust(store, document_, canceled_);
  }

  // Without what the connections write.
  Texts FlowTexts() const {
    Texts texts = ProviderTexts();
    std::erase_if(texts, [](const std::string& text) { return text.starts_with("MakeConnection: "); });
    return texts;
  }

  void ExpectError(const std::wstring& message) {
    EXPECT_CALL(notifications_, ShowSRErrorDialog(L"message 1600"s, message));
  }

  std::wstring document_ = L"before";
  bool canceled_ = false;
  const std::string started_ = "-> Outbound SR DS confirmation started";
  const std::string finished_ = "<- Outbound DS confirmation finished";
};

TEST_F(OutboundDSConfirmTest, NoStoresLeaveOnlyTheFirstAndTheLastRecord) {
  EXPECT_FALSE(Confirm({}));
  EXPECT_EQ(trace_.Records(), (Records{{0, kProviderFile, started_}, {0, kProviderFile, finished_}}));
  EXPECT_FALSE(WasSaved());
}

TEST_F(OutboundDSConfirmTest, AConfirmedStoreIsMergedSavedAndPublishedOnceUnderTheLock) {
  Hold({Accepted(L"s")});
  server_.Answer(Address(L"s"), Document(L"s"));
  EXPECT_TRUE(Confirm(Map({Accepted(L"s")})));
  const auto publications = publications_.All();
  ASSERT_EQ(publications.size(), 1U);
  EXPECT_TRUE(publications.front().insideCriticalSection);
  for (const StoreMap& stores : {provider_.GetStores(), Repository().RestoreStores()}) {
    EXPECT_TRUE(stores.at(L"s").GetGateways().front().GetTrustedByDS());
    EXPECT_TRUE(stores.at(L"s").Beacons(BeaconType::Internal).front().GetDSConfirmed());
  }
  EXPECT_EQ(FlowTexts(), (Texts{started_, "...DS trust verification succeded for store: s",
                                "...Received DiscoveryDocument: " + Narrow(Document(L"s")), finished_}));
}

TEST_F(OutboundDSConfirmTest, TheRequestsAreMadeOutsideTheLockInKeyOrder) {
  server_.Answer(Address(L"a"), Document(L"a"));
  server_.Answer(Address(L"b"), Document(L"b"));
  EXPECT_TRUE(Confirm(Map({Accepted(L"b"), Accepted(L"a")})));
  EXPECT_FALSE(server_.SentInsideCriticalSection());
  EXPECT_EQ(server_.Sent(), (std::vector<SentRequest>{{Address(L"a"), L""}, {Address(L"b"), L""}}));
  EXPECT_EQ(publications_.All().size(), 1U);
  EXPECT_EQ(Ids(provider_.GetStores()), (Wide{L"a", L"b"}));
}

TEST_F(OutboundDSConfirmTest, WhatTheDocumentDescribesIsMergedNotTheStoreThatWasAsked) {
  server_.Answer(Address(L"asked"), Document(L"described"));
  EXPECT_TRUE(Confirm(Map({Accepted(L"asked")})));
  EXPECT_EQ(Ids(provider_.GetStores()), (Wide{L"described"}));
}

TEST_F(OutboundDSConfirmTest, AStoreAlreadyHeldIsMergedWithoutTheReplaceDialog) {
  SRStore held = Accepted(L"s");
  held.SetStoreURL(Address(L"s") + L"/old");
  Hold({held});
  server_.Answer(Address(L"s"), Document(L"s"));
  EXPECT_TRUE(Confirm(Map({Accepted(L"s")})));
  EXPECT_EQ(provider_.GetStores().at(L"s").GetStoreURL(), Address(L"s"));
}

TEST_F(OutboundDSConfirmTest, ACancelledStoreDoesNotKeepTheNextOneFromBeingConfirmed) {
  location_.AnswerWith(2);
  FakeWarden warden;
  warden.EndWith(8);
  warden.Send(Address(L"b"));
  server_.Answer(Address(L"b"), Document(L"b"));
  EXPECT_TRUE(Confirm(Map({Accepted(L"a"), Accepted(L"b")})));
  EXPECT_EQ(Ids(Repository().RestoreStores()), (Wide{L"b"}));
  EXPECT_EQ(FlowTexts(), (Texts{started_, "...DS trust verification was canceled by user for store: a",
                                "...DS trust verification succeded for store: b",
                                "...Received DiscoveryDocument: " + Narrow(Document(L"b")), finished_}));
}

TEST_F(OutboundDSConfirmTest, AfterACancellationAFailureBeforeAnyRequestCountsAsCancelledToo) {
  location_.AnswerWith(3);
  location_.AnswerWith(2, Address(L"a"));
  FakeWarden warden;
  warden.EndWith(8);
  EXPECT_FALSE(Confirm(Map({Accepted(L"a"), Accepted(L"b")})));
  EXPECT_EQ(FlowTexts(), (Texts{started_, "...DS trust verification was canceled by user for store: a",
                                "...DS trust verification was canceled by user for store: b", finished_}));
}

TEST_F(OutboundDSConfirmTest, TheAuthenticatedRequestClearsTheCancelledFlagItself) {
  location_.AnswerWith(2);
  FakeWarden warden;
  warden.EndWith(8);
  warden.EndWith(6);
  ExpectError(L"message 1624");
  EXPECT_FALSE(Confirm(Map({Accepted(L"a"), Accepted(L"b")})));
  EXPECT_EQ(FlowTexts(), (Texts{started_, "...DS trust verification was canceled by user for store: a",
                                "...DS trust verification failed for store: b", finished_}));
}

TEST_F(OutboundDSConfirmTest, AFailedConnectionIsShownAndRecorded) {
  ExpectError(L"message 1624");
  EXPECT_FALSE(Confirm(Map({Accepted(L"s")})));
  EXPECT_EQ(FlowTexts(), (Texts{started_, "...DS trust verification failed for store: s", finished_}));
  EXPECT_FALSE(WasSaved());
  EXPECT_TRUE(publications_.All().empty());
}

TEST_F(OutboundDSConfirmTest, WhatBecameOfAStoreIsTracedAtLevelZero) {
  location_.AnswerWith(2);
  FakeWarden warden;
  warden.EndWith(8);
  warden.Send(Address(L"b"));
  warden.EndWith(6);
  server_.Answer(Address(L"b"), Document(L"b"));
  ExpectError(L"message 1624");
  EXPECT_TRUE(Confirm(Map({Accepted(L"a"), Accepted(L"b"), Accepted(L"c")})));
  const std::string file = kProviderFile;
  EXPECT_EQ(trace_.RecordsStartingWith("..."),
            (Records{{0, file, "...DS trust verification was canceled by user for store: a"},
                     {0, file, "...DS trust verification succeded for store: b"},
                     {0, file, "...Received DiscoveryDocument: " + Narrow(Document(L"b"))},
                     {0, file, "...DS trust verification failed for store: c"}}));
}

TEST_F(OutboundDSConfirmTest, AnUnreadableAnswerThroughTheAuthenticationManagerIsNoDiscoveryDocument) {
  location_.AnswerWith(2);
  FakeWarden warden;
  warden.Send(Address(L"s"));
  server_.Answer(Address(L"s"), {200, L"", L"Content-Type: text/xml\r\n"});
  ExpectError(L"message 1616");
  EXPECT_FALSE(Verify(L"s"));
}

TEST_F(OutboundDSConfirmTest, AResponseIsTakenWholeWhateverStandsBeforeTheMarker) {
  const std::wstring response = L"<?xml version=\"1.0\"?>\n  <!-- x --> <Discovery/> after";
  server_.Answer(Address(L"s"), response);
  EXPECT_TRUE(Verify(L"s"));
  EXPECT_EQ(document_, response);
}

TEST_F(OutboundDSConfirmTest, AResponseWithTheMarkerInLowerCaseIsNoDiscoveryDocument) {
  ExpectError(L"message 1616");
  server_.Answer(Address(L"s"), L"<discovery/>");
  EXPECT_FALSE(Verify(L"s"));
  EXPECT_EQ(document_, L"before");
  EXPECT_FALSE(canceled_);
}

TEST_F(OutboundDSConfirmTest, AnEmptyResponseIsNoDiscoveryDocument) {
  ExpectError(L"message 1616");
  server_.Answer(Address(L"s"), L"");
  EXPECT_FALSE(Confirm(Map({Accepted(L"s")})));
  EXPECT_EQ(FlowTexts(), (Texts{started_, "...DS trust verification failed for store: s", finished_}));
}

TEST_F(OutboundDSConfirmTest, ADocumentThatParsesToNothingChangesAndSavesNothing) {
  Hold({Accepted(L"s")});
  for (const wchar_t* document : {L"<Discovery", L"<Discovery/>", L"<p>&lt;<Discovery</p>"}) {
    server_.Answer(Address(L"s"), document);
    EXPECT_FALSE(Confirm(Map({Accepted(L"s")})));
  }
  EXPECT_FALSE(WasSaved());
  EXPECT_TRUE(publications_.All().empty());
}

TEST_F(OutboundDSConfirmTest, AnUnreadableDocumentAmongOthersIsSkippedWithoutARecord) {
  bool updated = false;
  provider_.MergeDiscoveryDocs({}, {Document(L"a"), L"<Discovery", Document(L"b")}, updated);
  EXPECT_TRUE(updated);
  EXPECT_EQ(Ids(provider_.GetStores()), (Wide{L"a", L"b"}));
  EXPECT_TRUE(FlowTexts().empty());
}

TEST_F(OutboundDSConfirmTest, DocumentsAreMergedInTheirOrder) {
  const auto describing = [](const wchar_t* address) {
    return DiscoveryDocument(ServiceAt(L"s", address, L"", InServiceRecordNamespace()));
  };
  bool updated = false;
  provider_.MergeDiscoveryDocs({}, {describing(L"https://first"), describing(L"https://second")}, updated);
  EXPECT_EQ(provider_.GetStores().at(L"s").GetStoreURL(), L"https://second");
}

TEST_F(OutboundDSConfirmTest, TheChangeIsSavedBeforeItIsPublished) {
  server_.Answer(Address(L"s"), Document(L"s"));
  EXPECT_TRUE(Confirm(Map({Accepted(L"s")})));
  EXPECT_TRUE(SavedAndThenPublishedOnce());
}

TEST_F(OutboundDSConfirmTest, TheLockIsLeftWhenTheChangeCannotBePublished) {
  server_.Answer(Address(L"s"), Document(L"s"));
  publications_.FailNext();
  EXPECT_THROW(Confirm(Map({Accepted(L"s")})), std::runtime_error);
  EXPECT_FALSE(InsideCriticalSection());
}

TEST_F(OutboundDSConfirmTest, ALaterUnreadableDocumentDoesNotUndoTheUpdate) {
  bool updated = false;
  provider_.MergeDiscoveryDocs({}, {Document(L"a"), L"<Discovery"}, updated);
  EXPECT_TRUE(updated);
}

TEST_F(OutboundDSConfirmTest, WithoutDocumentsNothingIsUpdated) {
  bool updated = true;
  provider_.MergeDiscoveryDocs(Map({Accepted(L"s")}), {}, updated);
  EXPECT_FALSE(updated);
  EXPECT_TRUE(provider_.GetStores().empty());
}

}  // namespace

#include "core/ProviderTest.h"

#include <stdexcept>

namespace {

using namespace ServiceRecords;
using namespace std::string_literals;
using namespace TestSupport;

class InboundUpdateTest : public ProviderTest {
 protected:
  bool Update(const std::wstring& document) {
    bool updated = true;
    provider_.InboundUpdate(document, updated);
    return updated;
  }

  static std::wstring DocumentWith(const std::wstring& lists) {
    return DiscoveryDocument(Service(L"s", lists, InServiceRecordNamespace()));
  }

  const std::wstring lists_ = L"<Gateways>" + GatewayElement(L"gw") +
                              L"</Gateways><Internal><Beacon>https://in</Beacon></Internal>"
                              L"<External><Beacon>https://out</Beacon></External>";
};

TEST_F(InboundUpdateTest, ANewStoreIsSavedAsConfirmedAndPublishedOnceUnderTheLock) {
  const std::wstring document = DocumentWith(lists_);
  EXPECT_TRUE(Update(document));
  const auto publications = publications_.All();
  ASSERT_EQ(publications.size(), 1U);
  EXPECT_TRUE(publications.front().insideCriticalSection);
  const StoreMap saved = Repository().RestoreStores();
  for (const StoreMap& stores : {provider_.GetStores(), saved, publications.front().stores}) {
    const SRStore& store = stores.at(L"s");
    EXPECT_TRUE(store.GetGateways().front().GetTrustedByDS());
    EXPECT_TRUE(store.Beacons(BeaconType::Internal).front().GetDSConfirmed());
    EXPECT_TRUE(store.Beacons(BeaconType::External).front().GetDSConfirmed());
  }
  EXPECT_EQ(
      trace_.Records(),
      (Records{{0, kProviderFile, "-> Inbound SR update started. Document contents: " + Narrow(document)},
               {0, kDocParserFile, "No Errors Detected"},
               {0, kProviderFile, "...SR document parsed successfully."},
               {0, kProviderFile, "<- Inbound SR update finished"}}));
}

TEST_F(InboundUpdateTest, AStoreAlreadyHeldIsMergedAsConfirmedWithoutADialog) {
  SRStore held = Store(L"s", L"https://old", {Gateway(L"user's"), Gateway(L"gone")});
  held.GetGateways().back().SetTrustedByDS(true);
  Hold({held});
  EXPECT_TRUE(Update(DocumentWith(lists_)));
  const SRStore merged = provider_.GetStores().at(L"s");
  EXPECT_EQ(merged.GetStoreURL(), L"https://s.example/store/discovery");
  EXPECT_EQ(Names(merged.GetGateways()), (Wide{L"user's", L"gw"}));
  EXPECT_TRUE(merged.GetGateways().back().GetTrustedByDS());
  EXPECT_EQ(publications_.All().size(), 1U);
}

TEST_F(InboundUpdateTest, AServiceRecordIsTakenTheSameWay) {
  EXPECT_TRUE(Update(ServiceRecord(Service(L"s"))));
  EXPECT_EQ(Ids(provider_.GetStores()), (Wide{L"s"}));
}

TEST_F(InboundUpdateTest, TheDocumentIsParsedOutsideTheLockAndTheLockIsLeft) {
  EXPECT_TRUE(Update(DocumentWith(lists_)));
  EXPECT_FALSE(trace_.AnyMarked(kDocParserFile));
  EXPECT_FALSE(InsideCriticalSection());
}

TEST_F(InboundUpdateTest, TheChangeIsSavedBeforeItIsPublished) {
  EXPECT_TRUE(Update(DocumentWith(lists_)));
  EXPECT_TRUE(SavedAndThenPublishedOnce());
}

TEST_F(InboundUpdateTest, TheLockIsLeftWhenTheChangeCannotBePublished) {
  publications_.FailNext();
  EXPECT_THROW(Update(DocumentWith(lists_)), std::runtime_error);
  EXPECT_FALSE(InsideCriticalSection());
}

TEST_F(InboundUpdateTest, ADocumentThatHoldsNoStoreShowsOneErrorAndChangesNothing) {
  Hold({Store(L"held", L"https://held")});
  EXPECT_CALL(notifications_, ShowSRErrorDialog(L"message 1608"s, L"message 1576"s))
      .WillOnce([](const std::wstring&, const std::wstring&) {
        EXPECT_FALSE(InsideCriticalSection());
        return 0;
      });
  EXPECT_FALSE(Update(DiscoveryDocument(L"")));
  EXPECT_EQ(Ids(provider_.GetStores()), (Wide{L"held"}));
  EXPECT_FALSE(WasSaved());
  EXPECT_TRUE(publications_.All().empty());
  EXPECT_EQ(trace_.Records().back(), (TraceRecord{0, kProviderFile, "<- Inbound SR update finished"}));
  EXPECT_EQ(trace_.RecordsStartingWith("..."),
            (Records{{2, kProviderFile, "...Failed to parse SR document."}}));
}

TEST_F(InboundUpdateTest, ATextThatIsNoDocumentIsHandledTheSameWay) {
  for (const wchar_t* text : {L"", L"no document", L"<Discovery"}) {
    EXPECT_CALL(notifications_, ShowSRErrorDialog(L"message 1608"s, L"message 1576"s)).RetiresOnSaturation();
    EXPECT_FALSE(Update(text));
  }
  EXPECT_FALSE(WasSaved());
}

}  // namespace

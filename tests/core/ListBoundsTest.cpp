#include "SRLib/Platform/SSLValidationDetails.h"
#include "SRLib/Provider/StoreBounds.h"
#include "core/ProviderTest.h"
#include "support/TemporaryFolder.h"

#include <fstream>

namespace {

using namespace ServiceRecords;
using namespace std::string_literals;
using namespace TestSupport;
using ::testing::Return;

class ListBoundsTest : public ProviderTest {
 protected:
  bool Merge(StoreMap incoming, bool dsTrusted = true) {
    bool updated = false;
    provider_.MergeStores(incoming, dsTrusted, updated);
    return updated;
  }
  bool HandIn(const std::wstring& services) {
    bool updated = false;
    provider_.InboundUpdate(ServiceRecord(services), updated);
    return updated;
  }

  static StoreMap Many(std::size_t count, const std::wstring& prefix = L"s") {
    StoreMap stores;
    for (std::size_t i = 0; i < count; ++i) {
      const std::wstring id = prefix + std::to_wstring(i);
      stores.emplace(id, Store(id, L"https://h"));
    }
    return stores;
  }
  static SRStore WithGateways(const std::wstring& id, std::size_t count, const std::wstring& prefix = L"g") {
    SRStore store = Store(id, L"https://h");
    for (std::size_t i = 0; i < count; ++i) store.AddGateway(Gateway(prefix + std::to_wstring(i)));
    return store;
  }
  static std::wstring ServiceWithGateways(const std::wstring& id, std::size_t count,
                                          const std::wstring& prefix) {
    std::wstring gateways;
    for (std::size_t i = 0; i < count; ++i) gateways += GatewayElement(prefix + std::to_wstring(i));
    return Service(id, L"<Gateways>" + gateways + L"</Gateways>");
  }
  static SRStore WithBeacons(const std::wstring& id, std::size_t count, BeaconType type) {
    SRStore store = Store(id, L"https://h");
    for (std::size_t i = 0; i < count; ++i) store.AddBeacon(Beacon(L"b" + std::to_wstring(i)), type);
    return store;
  }
  // A store of so many bytes in the list.
  static SRStore OfSize(const std::wstring& id, std::size_t bytes) {
    SRStore store = Store(id, L"https://h");
    for (int i = 0; bytes - SizeInList(store) > 4000; ++i)
      store.AddGateway(Gateway(std::to_wstring(i), std::wstring(3000, L'x')));
    store.SetStoreName(store.GetStoreName() + std::wstring(bytes - SizeInList(store), L'n'));
    return store;
  }
  // What is in the file when the program starts.
  void Restored(StoreMap stores) {
    Repository().SaveStores(stores);
    provider_.RestoreFromRepository();
    Forget();
  }

  void ExpectRefusal(const std::string& bound) {
    EXPECT_EQ(trace_.RecordsStartingWith("...The document is not taken"),
              (Records{{2, kProviderFile,
                        "...The document is not taken: with it the list would hold more than " + bound}}));
    EXPECT_FALSE(WasSaved());
    EXPECT_TRUE(publications_.All().empty());
    Forget();
  }
};

TEST_F(ListBoundsTest, TenThousandStoresAreHeldAndNoMore) {
  EXPECT_TRUE(Merge(Many(9999)));
  EXPECT_FALSE(Merge(Many(2, L"new")));
  EXPECT_EQ(provider_.GetStores().size(), 9999U);
  ExpectRefusal("10000 stores");
  EXPECT_TRUE(Merge(Many(1, L"new")));
  EXPECT_TRUE(Merge(Many(9999))) << "the same";
}

TEST_F(ListBoundsTest, FiveHundredGatewaysAreHeldByAStoreAndNoMore) {
  EXPECT_FALSE(Merge(Map({WithGateways(L"s", 501)})));
  ExpectRefusal("500 gateways of a store");
  EXPECT_TRUE(Merge(Map({WithGateways(L"s", 500)})));
  EXPECT_TRUE(Merge(Map({WithGateways(L"s", 500)}))) << "the same";
}

TEST_F(ListBoundsTest, GatewaysThatAMergeWouldLeaveAreCountedTogether) {
  Hold({WithGateways(L"s", 300)});
  EXPECT_FALSE(Merge(Map({WithGateways(L"s", 201, L"new")})));
  ExpectRefusal("500 gateways of a store");
  EXPECT_EQ(provider_.GetStores().at(L"s").GetGateways().size(), 300U);
  EXPECT_TRUE(Merge(Map({WithGateways(L"s", 200, L"new")})));
}

TEST_F(ListBoundsTest, FiveHundredBeaconsOfAKindAreHeldByAStoreAndNoMore) {
  for (const BeaconType type : {BeaconType::Internal, BeaconType::External}) {
    EXPECT_FALSE(Merge(Map({WithBeacons(L"s", 501, type)})));
    ExpectRefusal("500 beacons of a kind of a store");
    EXPECT_TRUE(Merge(Map({WithBeacons(L"s", 500, type)})));
  }
}

TEST_F(ListBoundsTest, TheListHolds32MebibytesAndNoMore) {
  SRStore large = WithGateways(L"0", 500);
  for (SRGateway& gateway : large.GetGateways()) gateway.SetLocation(std::wstring(4096, L'\u00E9'));
  StoreMap stores;
  std::size_t rest = kMaximumListBytes;
  for (; rest > SizeInList(large); rest -= SizeInList(large)) {
    large.SetStoreID(std::to_wstring(stores.size()));
    stores.emplace(large.GetStoreID(), large);
  }
  ASSERT_EQ(stores.size(), 8U);
  ASSERT_TRUE(Merge(stores));
  EXPECT_FALSE(Merge(Map({OfSize(L"last", rest + 1)})));
  ExpectRefusal("33554432 bytes of stores");
  EXPECT_TRUE(Merge(Map({OfSize(L"last", rest)})));
  EXPECT_FALSE(Merge(Map({Store(L"one more", L"https://h")})));
  EXPECT_TRUE(Merge(Map({OfSize(L"last", rest)}))) << "the same";
}

TEST_F(ListBoundsTest, WhatAStoreTakesInTheListIsItsTextInUtf8AndSomeFraming) {
  const std::size_t empty = SizeInList(SRStore());
  SRStore store;
  store.SetStoreID(L"1");
  store.SetStoreName(L"22");
  store.SetStoreURL(L"\u0416\u20AC");
  EXPECT_EQ(SizeInList(store), empty + 1 + 2 + 5);
  const std::size_t before = SizeInList(store);
  store.AddGateway(Gateway(L""));
  const std::size_t framing = SizeInList(store) - before;
  store.AddGateway(Gateway(L"1", L"22"));
  EXPECT_EQ(SizeInList(store), before + 2 * framing + 3);
  store.AddBeacon(Beacon(L"not in the list"), BeaconType::Internal);
  EXPECT_EQ(SizeInList(store), before + 2 * framing + 3);
}

TEST_F(ListBoundsTest, ADocumentThatPassesABoundCountsAsOneWithoutStores) {
  EXPECT_CALL(notifications_, ShowSRErrorDialog(L"message 1608"s, L"message 1576"s));
  EXPECT_FALSE(HandIn(Service(L"fine") +
                      Service(L"s", L"<Gateways>" + Repeated(GatewayElement(L"g"), 501) + L"</Gateways>")));
  EXPECT_TRUE(provider_.GetStores().empty());
  EXPECT_EQ(trace_.RecordsStartingWith("...SR document parsed"), Records{});
  EXPECT_EQ(trace_.RecordsStartingWith("...Failed to parse SR document.").size(), 1U);
  ExpectRefusal("500 gateways of a store");
}

TEST_F(ListBoundsTest, WhatADocumentWouldAddToTheHeldStoreCountsToo) {
  Hold({WithGateways(L"s", 300)});
  EXPECT_CALL(notifications_, ShowSRErrorDialog(L"message 1608"s, L"message 1576"s));
  EXPECT_FALSE(HandIn(ServiceWithGateways(L"s", 201, L"new")));
  ExpectRefusal("500 gateways of a store");
}

TEST_F(ListBoundsTest, WhatADocumentWouldTakeAwayDoesNotCount) {
  SRStore held = WithGateways(L"s", 300);
  held.SetAllGatewaysDSTrusted();
  Hold({held});
  EXPECT_TRUE(HandIn(ServiceWithGateways(L"s", 201, L"new")));
  EXPECT_EQ(provider_.GetStores().at(L"s").GetGateways().size(), 201U);
}

TEST_F(ListBoundsTest, NobodyIsAskedAboutAFileThatPassesABound) {
  ASSERT_TRUE(Merge(Many(10000)));
  Forget();
  const TemporaryFolder folder;
  const auto path = folder.Path() / "opened.cr";
  std::ofstream(path) << Narrow(ServiceRecord(Service(L"new")));
  EXPECT_CALL(notifications_, ShowSRErrorDialog(L"message 1600"s, L"message 1576"s));
  StoreMap accepted;
  provider_.OutboundUserConfirm(L"'" + path.wstring() + L"'", accepted);
  EXPECT_TRUE(accepted.empty());
  ExpectRefusal("10000 stores");
}

TEST_F(ListBoundsTest, AFileForWhichTheListWasFilledMeanwhileCountsAsOneWithoutStores) {
  validations_.Answer(L"https://new.example/store/discovery", SSLOutcome::Trusted(L"", L""));
  EXPECT_CALL(notifications_, ShowTrustDialog).WillOnce([this] {
    EXPECT_TRUE(Merge(Many(10000)));
    Forget();
    return 100;
  });
  const TemporaryFolder folder;
  const auto path = folder.Path() / "opened.cr";
  std::ofstream(path) << Narrow(ServiceRecord(Service(L"new")));
  EXPECT_CALL(notifications_, ShowSRErrorDialog(L"message 1600"s, L"message 1576"s));
  StoreMap accepted;
  provider_.OutboundUserConfirm(L"'" + path.wstring() + L"'", accepted);
  EXPECT_TRUE(accepted.empty());
  EXPECT_EQ(trace_.RecordsStartingWith("...message 1576").size(), 1U);
  ExpectRefusal("10000 stores");
}

TEST_F(ListBoundsTest, ADocumentForWhichTheListWasReadAtLastAndIsFullCountsAsOneWithoutStores) {
  StoreMap full = Map({WithGateways(L"s", 500)});
  Repository().SaveStores(full);
  configuration_.FailReads(true);
  provider_.RestoreFromRepository();
  configuration_.FailReads(false);
  publications_.Clear();
  EXPECT_CALL(notifications_, ShowSRErrorDialog(L"message 1608"s, L"message 1576"s));
  EXPECT_FALSE(HandIn(Service(L"s", L"<Gateways>" + GatewayElement(L"new") + L"</Gateways>")));
  EXPECT_EQ(provider_.GetStores().at(L"s").GetGateways().size(), 500U);
  EXPECT_EQ(trace_.RecordsStartingWith("...Failed to parse SR document.").size(), 1U);
}

TEST_F(ListBoundsTest, AFetchedDocumentThatPassesABoundIsSkipped) {
  location_.AnswerWith(1);
  const SRStore asked = Store(L"a", L"https://a.example/store/discovery");
  server_.Answer(
      asked.GetStoreURL(),
      DiscoveryDocument(Service(L"a", L"<External>" + Repeated(L"<Beacon>b</Beacon>", 501) + L"</External>",
                                InServiceRecordNamespace())));
  StoreMap stores = Map({asked});
  bool updated = true;
  provider_.OutboundDSConfirm(stores, updated);
  EXPECT_FALSE(updated);
  ExpectRefusal("500 beacons of a kind of a store");
}

TEST_F(ListBoundsTest, WhatWasRestoredIsKeptChangedAndDeletedButDoesNotGrow) {
  Restored(Map({WithGateways(L"full", 510), Store(L"s", L"https://h")}));
  EXPECT_EQ(provider_.GetStores().at(L"full").GetGateways().size(), 510U);
  EXPECT_TRUE(Merge(Map({WithGateways(L"full", 510), Store(L"new", L"https://new")})));
  EXPECT_FALSE(Merge(Map({WithGateways(L"full", 511)})));
  ExpectRefusal("500 gateways of a store");
  EXPECT_TRUE(provider_.RemoveStore(L"full"));
}

TEST_F(ListBoundsTest, WhatIsPastABoundMayStayAsItIs) {
  const StoreMap many = Many(10001);
  EXPECT_EQ(BoundPassed(many, Many(1)), std::nullopt);
  EXPECT_EQ(BoundPassed(many, Many(1, L"new")), "more than 10000 stores");

  for (const BeaconType type : {BeaconType::Internal, BeaconType::External}) {
    const StoreMap full = Map({WithBeacons(L"s", 501, type)});
    EXPECT_EQ(BoundPassed(full, full), std::nullopt);
    EXPECT_EQ(BoundPassed(full, Map({WithBeacons(L"s", 502, type)})),
              "more than 500 beacons of a kind of a store");
  }

  SRStore large = Store(L"s", L"https://h");
  large.SetStoreName(std::wstring(kMaximumListBytes, L'n'));
  const StoreMap held = Map({large});
  EXPECT_EQ(BoundPassed(held, held), std::nullopt);
  large.SetStoreName(large.GetStoreName() + L'n');
  EXPECT_EQ(BoundPassed(held, Map({large})), "more than 33554432 bytes of stores");
}

}  // namespace

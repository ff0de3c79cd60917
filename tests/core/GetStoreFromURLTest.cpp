#include "core/ProviderTest.h"

namespace {

using namespace ServiceRecords;
using namespace TestSupport;

class GetStoreFromURLTest : public ProviderTest {
 protected:
  // The id of the store that the URL points at; a dash when there is none.
  std::wstring Find(const std::wstring& url) {
    Forget();
    SRStore store = Store(L"-", L"untouched");
    const bool found = provider_.GetStoreFromURL(url, store);
    EXPECT_EQ(found, store.GetStoreID() != L"-");
    EXPECT_EQ(found, store.GetStoreURL() != L"untouched");
    return store.GetStoreID();
  }

  static Records Written(const std::vector<std::string>& texts) {
    Records records;
    for (const std::string& text : texts)
      records.push_back({0, kProviderFile, "SRProvider::GetStoreFromURL " + text});
    return records;
  }

  static constexpr char kTrimming[] = "full store address not found, checking by trimming URLs";
};

TEST_F(GetStoreFromURLTest, AnEmptyListHasNoStore) {
  EXPECT_EQ(Find(L"https://h/a/b"), L"-");
  EXPECT_EQ(trace_.Records(),
            Written({kTrimming, "store address not found, looking for scheme-host-port, shpAddress is h",
                     "failed to find matching store for URL: https://h/a/b"}));
}

TEST_F(GetStoreFromURLTest, TheWholeAddressIsMatchedInAnyLetterCase) {
  Hold({Store(L"s", L"https://host/Store/discovery")});
  EXPECT_EQ(Find(L"HTTPS://Host/store/DISCOVERY"), L"s");
  EXPECT_EQ(trace_.Records(), Written({"found matching store: https://host/Store/discovery, for URL: "
                                       "HTTPS://Host/store/DISCOVERY"}));
}

TEST_F(GetStoreFromURLTest, OfStoresWithTheWholeAddressTheLastIsTaken) {
  Hold({Store(L"1", L"https://h/x"), Store(L"2", L"https://H/x"), Store(L"3", L"https://h/y")});
  EXPECT_EQ(Find(L"https://h/x"), L"2");
}

TEST_F(GetStoreFromURLTest, TheAnswerIsACopyOfTheWholeStore) {
  SRStore held = Store(L"s", L"https://h/x", {Gateway(L"GW", L"https://gw")});
  held.AddBeacon(Beacon(L"in"), BeaconType::Internal);
  held.AddBeacon(Beacon(L"out"), BeaconType::External);
  Hold({held});
  SRStore store;
  ASSERT_TRUE(provider_.GetStoreFromURL(L"https://h/x", store));
  EXPECT_EQ(store.GetStoreName(), L"Name of s");
  EXPECT_EQ(Names(store.GetGateways()), (Wide{L"GW"}));
  EXPECT_EQ(Locations(store.Beacons(BeaconType::Internal)), (Wide{L"in"}));
  EXPECT_EQ(Locations(store.Beacons(BeaconType::External)), (Wide{L"out"}));
}

TEST_F(GetStoreFromURLTest, AnAddressBelowTheStoreIsCutBackSegmentBySegment) {
  Hold({Store(L"s", L"scheme://host/Apps/store/Discovery")});
  EXPECT_EQ(Find(L"scheme://host/apps/STORE/resources/launch"), L"s");
  EXPECT_EQ(trace_.Records(),
            Written({kTrimming,
                     "checking trimmedStoreUrl: scheme://host/apps/store/resources, against: "
                     "scheme://host/apps/store",
                     "checking trimmedStoreUrl: scheme://host/apps/store, against: scheme://host/apps/store",
                     "found matching store: scheme://host/Apps/store/Discovery, for URL: "
                     "scheme://host/apps/STORE/resources/launch"}));
}

TEST_F(GetStoreFromURLTest, EveryCutIsComparedWithEveryKeyInKeyOrderUpToTheMatch) {
  Hold({Store(L"1", L"s://h/z"), Store(L"2", L"s://h/a/discovery"), Store(L"3", L"s://h/m")});
  EXPECT_EQ(Find(L"s://h/m/x/y"), L"3");
  EXPECT_EQ(trace_.Records(), Written({kTrimming, "checking trimmedStoreUrl: s://h/m/x, against: s://h/a",
                                       "checking trimmedStoreUrl: s://h/m/x, against: s://h/m",
                                       "checking trimmedStoreUrl: s://h/m/x, against: s://h/z",
                                       "checking trimmedStoreUrl: s://h/m, against: s://h/a",
                                       "checking trimmedStoreUrl: s://h/m, against: s://h/m",
                                       "found matching store: s://h/m, for URL: s://h/m/x/y"}));
}

TEST_F(GetStoreFromURLTest, TheLongestCutThatMatchesWins) {
  Hold({Store(L"1", L"s://h/a"), Store(L"2", L"s://h/a/b/discovery")});
  EXPECT_EQ(Find(L"s://h/a/b/c"), L"2");
}

TEST_F(GetStoreFromURLTest, OfStoresWithOneTrimmedAddressTheFirstIsTaken) {
  Hold({Store(L"1", L"s://h/a/discovery"), Store(L"2", L"s://h/a"), Store(L"3", L"s://h/a/DISCOVERY")});
  EXPECT_EQ(Find(L"s://h/a/x"), L"1");
}

TEST_F(GetStoreFromURLTest, TheDiscoverySuffixIsRemovedOnceAndOnlyAtTheEnd) {
  const std::string lastResort = "SRProvider::GetStoreFromURL store address not found";
  Hold({Store(L"1", L"s://h/discovery/x"), Store(L"2", L"s://h/b/discovery/discovery")});
  EXPECT_EQ(Find(L"s://h/discovery/x/y"), L"1");
  EXPECT_EQ(trace_.RecordsStartingWith(lastResort), Records{});
  EXPECT_EQ(Find(L"s://h/b/discovery/x"), L"2");
  EXPECT_EQ(trace_.RecordsStartingWith(lastResort), Records{});
}

TEST_F(GetStoreFromURLTest, OfTwoDiscoverySuffixesOneStays) {
  Hold({Store(L"s", L"s://h/b/discovery/discovery")});
  EXPECT_EQ(Find(L"s://h/b/x"), L"s") << "by host and port alone";
  EXPECT_EQ(trace_.RecordsStartingWith("SRProvider::GetStoreFromURL checking"),
            Written({"checking trimmedStoreUrl: s://h/b, against: s://h/b/discovery"}));
}

TEST_F(GetStoreFromURLTest, TheHostBeginsBehindTheFirstSchemeSeparator) {
  Hold({Store(L"1", L"other://unrelated"), Store(L"2", L"https://proxy/to")});
  EXPECT_EQ(Find(L"https://proxy/other://unrelated"), L"2");
  EXPECT_EQ(trace_.RecordsStartingWith("SRProvider::GetStoreFromURL store address not found").size(), 1U);
  EXPECT_EQ(Find(L"https://proxy/to/x://y"), L"2");
  EXPECT_EQ(trace_.RecordsStartingWith("SRProvider::GetStoreFromURL store address not found").size(), 0U);
}

TEST_F(GetStoreFromURLTest, AFailureIsRecordedWithTheUrlAsItWasAsked) {
  EXPECT_EQ(Find(L"HTTPS://Nowhere/X"), L"-");
  EXPECT_EQ(trace_.Records().back(),
            Written({"failed to find matching store for URL: HTTPS://Nowhere/X"}).back());
}

TEST_F(GetStoreFromURLTest, LetterCaseCountsNowhereBeyondAsciiEither) {
  Hold({Store(L"1", L"https://h/\u00c4PFEL/\u0416/discovery"), Store(L"2", L"https://\u00dcber/x")});
  EXPECT_EQ(Find(L"https://h/\u00e4pfel/\u0436/discovery"), L"1");
  EXPECT_EQ(Find(L"https://h/\u00e4pfel/\u0436/y"), L"1");
  EXPECT_EQ(Find(L"https://\u00fcBER/y"), L"2");
}

TEST_F(GetStoreFromURLTest, AnAddressOf4096CharactersIsCutBackAndALongerOneIsNot) {
  Hold({Store(L"a", L"https://h/other"), Store(L"z", L"https://h/x")});
  const std::wstring longest = L"https://h/x/" + std::wstring(4096 - 12, L'y');
  EXPECT_EQ(Find(longest), L"z");
  EXPECT_EQ(Find(longest + L"y"), L"a") << "by host and port alone";
  EXPECT_EQ(trace_.Records().size(), 2U);
  EXPECT_EQ(Find(L"https://h/" + std::wstring(5000, L'y')), L"a");
  EXPECT_EQ(trace_.Records().size(), 2U);
}

TEST_F(GetStoreFromURLTest, AnAddressOf128CutsIsCutBackAndOneOfMoreIsNot) {
  Hold({Store(L"a", L"https://h/other"), Store(L"z", L"https://h/x")});
  EXPECT_EQ(Find(L"https://h/x" + Repeated(L"/y", 128)), L"z");
  EXPECT_EQ(Find(L"https://h/x" + Repeated(L"/y", 129)), L"a") << "by host and port alone";
  EXPECT_EQ(trace_.Records().size(), 2U);
}

TEST_F(GetStoreFromURLTest, AThousandChecksAreRecordedAndTheOthersCounted) {
  std::vector<SRStore> stores;
  for (int i = 100; i < 200; ++i)
    stores.push_back(Store(L"s" + std::to_wstring(i), L"s://h/" + std::to_wstring(i)));
  Hold(stores);
  const std::string checking = "SRProvider::GetStoreFromURL checking";
  const std::string further = "SRProvider::GetStoreFromURL further checks";
  EXPECT_EQ(Find(L"s://h/199" + Repeated(L"/y", 10)), L"s199");
  EXPECT_EQ(trace_.RecordsStartingWith(checking).size(), 1000U);
  EXPECT_EQ(trace_.RecordsStartingWith(further), Records{});
  EXPECT_EQ(Find(L"s://h/199" + Repeated(L"/y", 11)), L"s199");
  EXPECT_EQ(trace_.RecordsStartingWith(checking).size(), 1000U);
  EXPECT_EQ(trace_.RecordsStartingWith(further), Written({"further checks of trimmedStoreUrl: 100"}));
  EXPECT_EQ(trace_.Records().size(), 1003U);
}

TEST_F(GetStoreFromURLTest, TheRequestItselfIsNeverComparedWithTrimmedAddresses) {
  Hold({Store(L"s", L"scheme://host/apps/store/discovery")});
  EXPECT_EQ(Find(L"scheme://host/apps/store"), L"s");
  EXPECT_EQ(
      trace_.Records(),
      Written(
          {kTrimming, "checking trimmedStoreUrl: scheme://host/apps, against: scheme://host/apps/store",
           "store address not found, looking for scheme-host-port, shpAddress is host",
           "found matching store: scheme://host/apps/store/discovery, for URL: scheme://host/apps/store"}));
}

TEST_F(GetStoreFromURLTest, ATrailingSlashIsASegmentToCut) {
  Hold({Store(L"s", L"scheme://host/apps/store/discovery")});
  EXPECT_EQ(Find(L"scheme://host/apps/store/"), L"s");
  EXPECT_EQ(trace_.Records().size(), 3U);
}

TEST_F(GetStoreFromURLTest, HostAndPortAreTheLastResort) {
  Hold({Store(L"1", L"scheme://other:443/y/discovery"), Store(L"2", L"scheme://other:444/y/discovery")});
  EXPECT_EQ(Find(L"scheme://OTHER:444/x"), L"2");
  EXPECT_EQ(
      trace_.Records(),
      Written({kTrimming, "store address not found, looking for scheme-host-port, shpAddress is other:444",
               "found matching store: scheme://other:444/y/discovery, for URL: scheme://OTHER:444/x"}));
}

TEST_F(GetStoreFromURLTest, WithoutASchemeTheHostBeginsAtTheStart) {
  Hold({Store(L"s", L"https://host/x")});
  EXPECT_EQ(Find(L"host/a/b"), L"s");
  EXPECT_EQ(trace_.Records(),
            Written({kTrimming, "checking trimmedStoreUrl: host/a, against: https://host/x",
                     "store address not found, looking for scheme-host-port, shpAddress is host",
                     "found matching store: https://host/x, for URL: host/a/b"}));
}

TEST_F(GetStoreFromURLTest, AnAddressWithoutAPathIsNotCut) {
  Hold({Store(L"s", L"scheme://host/x")});
  EXPECT_EQ(Find(L"scheme://host"), L"s");
  EXPECT_EQ(trace_.Records().size(), 3U);
  EXPECT_EQ(trace_.RecordsStartingWith("SRProvider::GetStoreFromURL checking").size(), 0U);
}

TEST_F(GetStoreFromURLTest, AnEmptyAddressFindsNothingAndLooksForNoHost) {
  Hold({Store(L"s", L"https://host/x")});
  EXPECT_EQ(Find(L""), L"-");
  EXPECT_EQ(trace_.Records(), Written({kTrimming, "failed to find matching store for URL: "}));
}

TEST_F(GetStoreFromURLTest, ASchemeWithoutAHostFindsNothing) {
  Hold({Store(L"s", L"https://host/x")});
  EXPECT_EQ(Find(L"https://"), L"-");
  EXPECT_EQ(Find(L"https:///a/b"), L"-");
}

TEST_F(GetStoreFromURLTest, AnEmptyStoreAddressIsMatchedByTheEmptyAddressAlone) {
  Hold({Store(L"s", L"")});
  EXPECT_EQ(Find(L""), L"s");
  EXPECT_EQ(Find(L"h"), L"-");
}

TEST_F(GetStoreFromURLTest, OneLetterMatchesTheFirstStoreThatContainsIt) {
  Hold({Store(L"1", L"https://xyz"), Store(L"2", L"https://bAb"), Store(L"3", L"https://a")});
  EXPECT_EQ(Find(L"a"), L"2");
}

TEST_F(GetStoreFromURLTest, AHostLongerThanEveryAddressIsNotFound) {
  Hold({Store(L"s", L"https://host")});
  EXPECT_EQ(Find(L"https://host.example.com"), L"-");
}

TEST_F(GetStoreFromURLTest, TheLockIsNotHeldWhileMatching) {
  Hold({Store(L"s", L"https://host/x")});
  EXPECT_EQ(Find(L"https://host/x/y"), L"s");
  EXPECT_FALSE(trace_.AnyMarked(kProviderFile));
  EXPECT_FALSE(InsideCriticalSection());
  EXPECT_FALSE(WasSaved());
}

}  // namespace

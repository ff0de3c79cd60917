#include "core/ProviderTest.h"

namespace {

using namespace ServiceRecords;
using namespace TestSupport;

class SetDefaultGatewayTest : public ProviderTest {
 protected:
  SetDefaultGatewayTest() {
    const std::list<SRGateway> gateways{Gateway(L"GW1", L"https://1", true), Gateway(L"GW2", L"https://2")};
    Hold({Store(L"a", L"https://same", gateways), Store(L"b", L"https://same", gateways),
          Store(L"c", L"https://c", gateways)});
  }

  Wide MarkedIn(const std::wstring& id) { return Marked(provider_.GetStores().at(id).GetGateways()); }
};

TEST_F(SetDefaultGatewayTest, OfTwoStoresWithTheUrlOnlyTheOneWithTheLowerIdIsChanged) {
  EXPECT_TRUE(provider_.SetDefaultGatewayForStore(L"https://same", L"GW2"));
  EXPECT_EQ(MarkedIn(L"a"), (Wide{L"GW2"}));
  EXPECT_EQ(MarkedIn(L"b"), (Wide{L"GW1"}));
  EXPECT_EQ(MarkedIn(L"c"), (Wide{L"GW1"}));
}

TEST_F(SetDefaultGatewayTest, AStoreIsFoundByItsId) {
  EXPECT_TRUE(provider_.SetDefaultGatewayForStoreID(L"b", L"GW2"));
  EXPECT_EQ(MarkedIn(L"a"), (Wide{L"GW1"}));
  EXPECT_EQ(MarkedIn(L"b"), (Wide{L"GW2"}));
}

TEST_F(SetDefaultGatewayTest, TheListIsSearchedAndChangedInsideTheLock) {
  const int before = CriticalSectionEntries();
  EXPECT_TRUE(provider_.SetDefaultGatewayForStoreID(L"b", L"GW2"));
  EXPECT_EQ(CriticalSectionEntries(), before + 1);
  EXPECT_TRUE(provider_.SetDefaultGatewayForStore(L"https://c", L"GW2"));
  EXPECT_EQ(CriticalSectionEntries(), before + 2);
  EXPECT_FALSE(InsideCriticalSection());
}

TEST_F(SetDefaultGatewayTest, AUrlIsMatchedToTheLetter) {
  for (const wchar_t* url : {L"https://Same", L"https://same/", L"https://sam", L""})
    EXPECT_FALSE(provider_.SetDefaultGatewayForStore(url, L"GW2"));
  EXPECT_EQ(MarkedIn(L"a"), (Wide{L"GW1"}));
}

TEST_F(SetDefaultGatewayTest, AnIdIsMatchedToTheLetter) {
  for (const wchar_t* id : {L"A", L"", L"a "})
    EXPECT_FALSE(provider_.SetDefaultGatewayForStoreID(id, L"GW2"));
  EXPECT_EQ(MarkedIn(L"a"), (Wide{L"GW1"}));
}

TEST_F(SetDefaultGatewayTest, AnUnknownGatewayIsRefused) {
  EXPECT_FALSE(provider_.SetDefaultGatewayForStore(L"https://c", L"GW3"));
  EXPECT_FALSE(provider_.SetDefaultGatewayForStoreID(L"c", L"gw1"));
  EXPECT_EQ(MarkedIn(L"c"), (Wide{L"GW1"}));
}

TEST_F(SetDefaultGatewayTest, TheDefaultGatewayCanBeSetAgain) {
  EXPECT_TRUE(provider_.SetDefaultGatewayForStoreID(L"c", L"GW1"));
  EXPECT_EQ(MarkedIn(L"c"), (Wide{L"GW1"}));
}

TEST_F(SetDefaultGatewayTest, AnEmptyListHasNoStoreToChange) {
  SRProvider provider(Parts());
  EXPECT_FALSE(provider.SetDefaultGatewayForStore(L"https://same", L"GW2"));
  EXPECT_FALSE(provider.SetDefaultGatewayForStoreID(L"a", L"GW2"));
}

TEST_F(SetDefaultGatewayTest, SettingNeitherSavesNorPublishesNorTraces) {
  EXPECT_TRUE(provider_.SetDefaultGatewayForStoreID(L"c", L"GW2"));
  EXPECT_FALSE(WasSaved());
  EXPECT_TRUE(publications_.All().empty());
  EXPECT_EQ(trace_.Records(), Records{});
  EXPECT_FALSE(InsideCriticalSection());
}

class PrepareOtherGatewaysTest : public ProviderTest {
 protected:
  using Others = std::vector<std::pair<std::wstring, std::wstring>>;

  Others OthersOf(const std::list<SRGateway>& gateways) {
    SRStore store = Store(L"s", L"https://s", gateways);
    return provider_.PrepareOtherGateways(store);
  }
};

TEST_F(PrepareOtherGatewaysTest, EveryGatewayButTheDefaultIsListedInOrder) {
  EXPECT_EQ(
      OthersOf({Gateway(L"C", L"https://c"), Gateway(L"B", L"https://b", true), Gateway(L"A", L"https://a")}),
      (Others{{L"C", L"https://c"}, {L"A", L"https://a"}}));
}

TEST_F(PrepareOtherGatewaysTest, AnOnlyGatewayHasNoOthers) {
  EXPECT_EQ(OthersOf({Gateway(L"A", L"https://a", true)}), Others{});
}

TEST_F(PrepareOtherGatewaysTest, EveryEntryOfTheDefaultsNameIsLeftOut) {
  EXPECT_EQ(
      OthersOf({Gateway(L"A", L"https://1", true), Gateway(L"B", L"https://b"), Gateway(L"A", L"https://2")}),
      (Others{{L"B", L"https://b"}}));
}

TEST_F(PrepareOtherGatewaysTest, WithoutAMarkTheFirstGatewayIsTheDefault) {
  EXPECT_EQ(OthersOf({Gateway(L"A", L"https://a"), Gateway(L"B", L"https://b")}),
            (Others{{L"B", L"https://b"}}));
}

TEST_F(PrepareOtherGatewaysTest, TheUsersChoiceIsTheDefault) {
  configuration_.SetString(L"SR\\UserSelectedGatewayName", L"B");
  EXPECT_EQ(OthersOf({Gateway(L"A", L"https://a", true), Gateway(L"B", L"https://b")}),
            (Others{{L"A", L"https://a"}}));
}

TEST_F(PrepareOtherGatewaysTest, AStoreWithoutGatewaysHasNone) {
  EXPECT_EQ(OthersOf({}), Others{});
}

}  // namespace

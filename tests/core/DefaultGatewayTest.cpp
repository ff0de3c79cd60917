#include "core/CoreTest.h"
#include "support/StoreBuilders.h"

namespace {

using namespace ServiceRecords;
using namespace TestSupport;
using Wide = std::vector<std::wstring>;

constexpr wchar_t kChoice[] = L"SR\\UserSelectedGatewayName";
constexpr char kChosen[] = "Gateway selected by user in PrefPanel: ";
constexpr char kMatched[] = "Gateway selected by user matches one of gateways in store list.";
constexpr char kNotMatched[] =
    "Gateway selected by user doesn't match any from the store. Using default from store: ";

class DefaultGatewayTest : public CoreTest {
 protected:
  // The default gateway's name, with the records that choosing it wrote.
  std::wstring DefaultOf(const SRStore& store) {
    trace_.Clear();
    SRGateway gateway;
    EXPECT_TRUE(store.GetDefaultGatewayRef(gateway, configuration_));
    return gateway.GetName();
  }

  const SRStore store_ =
      Store(L"S", L"https://s", {Gateway(L"GW1", L"https://1", true), Gateway(L"GW2", L"https://2")});
};

TEST_F(DefaultGatewayTest, TheGatewayThatTheUserChoseOutranksTheMark) {
  configuration_.SetString(kChoice, L"GW2");
  EXPECT_EQ(DefaultOf(store_), L"GW2");
  EXPECT_EQ(trace_.Records(),
            (Records{{0, kStoreFile, std::string(kChosen) + "GW2"}, {0, kStoreFile, kMatched}}));
}

TEST_F(DefaultGatewayTest, AChoiceThatNamesNoGatewayFallsBackToTheMark) {
  for (const wchar_t* choice : {L"gw2", L"GW3"}) {
    configuration_.SetString(kChoice, choice);
    EXPECT_EQ(DefaultOf(store_), L"GW1");
    const std::string name(choice, choice + 3);
    EXPECT_EQ(trace_.Records(), (Records{{0, kStoreFile, kChosen + name},
                                         {0, kStoreFile, std::string(kNotMatched) + "https://1"}}));
  }
}

TEST_F(DefaultGatewayTest, AnEmptyChoiceIsWrittenAndChoosesNothing) {
  configuration_.SetString(kChoice, L"");
  const SRStore unnamed =
      Store(L"S", L"https://s", {Gateway(L"GW1"), Gateway(L""), Gateway(L"GW3", L"", true)});
  EXPECT_EQ(DefaultOf(unnamed), L"GW3");
  EXPECT_EQ(trace_.TextsFrom(kStoreFile), (Texts{kChosen, kNotMatched}));
}

TEST_F(DefaultGatewayTest, WithoutAChoiceTheMarkDecidesAndTheFallbackIsWrittenAllTheSame) {
  EXPECT_EQ(DefaultOf(store_), L"GW1");
  EXPECT_EQ(trace_.Records(), (Records{{0, kStoreFile, std::string(kNotMatched) + "https://1"}}));
}

TEST_F(DefaultGatewayTest, AChoiceThatIsNoTextCountsAsNone) {
  configuration_.SetUInt(kChoice, 2);
  EXPECT_EQ(DefaultOf(store_), L"GW1");
  EXPECT_EQ(trace_.Records().size(), 1U);
}

TEST_F(DefaultGatewayTest, TheFirstOfSeveralMarksCounts) {
  EXPECT_EQ(DefaultOf(Store(L"S", L"", {Gateway(L"A"), Gateway(L"B", L"", true), Gateway(L"C", L"", true)})),
            L"B");
}

TEST_F(DefaultGatewayTest, WithoutAnyMarkTheFirstGatewayIsTheDefault) {
  EXPECT_EQ(DefaultOf(Store(L"S", L"", {Gateway(L"A", L"https://a"), Gateway(L"B")})), L"A");
  EXPECT_EQ(trace_.TextsFrom(kStoreFile), (Texts{std::string(kNotMatched) + "https://a"}));
}

TEST_F(DefaultGatewayTest, AStoreWithoutGatewaysHasNoneAndLeavesTheAnswerUntouched) {
  configuration_.SetString(kChoice, L"GW1");
  SRGateway gateway = Gateway(L"untouched");
  EXPECT_FALSE(Store(L"S", L"https://s").GetDefaultGatewayRef(gateway, configuration_));
  EXPECT_EQ(gateway.GetName(), L"untouched");
  EXPECT_TRUE(trace_.Records().empty());
}

TEST_F(DefaultGatewayTest, TheWholeGatewayIsCopiedOut) {
  SRGateway marked = Gateway(L"GW", L"https://g", true);
  marked.SetEdition(SRGateway::GatewayEdition::Enterprise);
  marked.SetAuthentication(SRGateway::GatewayAuthentication::SMS);
  marked.SetAGMode(SRGateway::AGMode::FB_RW);
  marked.SetTrustedByUser(true);
  marked.SetTrustedByDS(true);
  SRGateway copy;
  ASSERT_TRUE(Store(L"S", L"", {Gateway(L"A"), marked}).GetDefaultGatewayRef(copy, configuration_));
  EXPECT_EQ(copy.GetLocation(), L"https://g");
  EXPECT_EQ(copy.GetEdition(), SRGateway::GatewayEdition::Enterprise);
  EXPECT_EQ(copy.GetAuthentication(), SRGateway::GatewayAuthentication::SMS);
  EXPECT_EQ(copy.GetAGMode(), SRGateway::AGMode::FB_RW);
  EXPECT_TRUE(copy.GetTrustedByUser() && copy.GetTrustedByDS() && copy.GetDefault());
}

TEST_F(DefaultGatewayTest, SettingMovesTheMark) {
  SRStore store = store_;
  EXPECT_TRUE(store.SetDefaultGateway(L"GW2"));
  EXPECT_EQ(Marked(store.GetGateways()), (Wide{L"GW2"}));
}

TEST_F(DefaultGatewayTest, SettingTheDefaultAgainChangesNothing) {
  SRStore store = store_;
  EXPECT_TRUE(store.SetDefaultGateway(L"GW1"));
  EXPECT_EQ(Marked(store.GetGateways()), (Wide{L"GW1"}));
}

TEST_F(DefaultGatewayTest, SettingMarksAGatewayWhereNoneWasMarked) {
  SRStore store = Store(L"S", L"", {Gateway(L"A"), Gateway(L"B")});
  EXPECT_TRUE(store.SetDefaultGateway(L"B"));
  EXPECT_EQ(Marked(store.GetGateways()), (Wide{L"B"}));
}

TEST_F(DefaultGatewayTest, AnUnknownNameIsRefusedAndLeavesTheMarks) {
  SRStore store = store_;
  for (const wchar_t* name : {L"gw2", L"GW3", L""}) {
    EXPECT_FALSE(store.SetDefaultGateway(name));
    EXPECT_EQ(Marked(store.GetGateways()), (Wide{L"GW1"}));
  }
}

TEST_F(DefaultGatewayTest, AnEmptyNameNamesAnUnnamedGateway) {
  SRStore store = Store(L"S", L"", {Gateway(L"A", L"", true), Gateway(L"")});
  EXPECT_TRUE(store.SetDefaultGateway(L""));
  EXPECT_EQ(Marked(store.GetGateways()), (Wide{L""}));
}

TEST_F(DefaultGatewayTest, OnlyTheFirstOfSeveralMarksIsCleared) {
  SRStore store = Store(L"S", L"", {Gateway(L"A", L"", true), Gateway(L"B", L"", true), Gateway(L"C")});
  EXPECT_TRUE(store.SetDefaultGateway(L"C"));
  EXPECT_EQ(Marked(store.GetGateways()), (Wide{L"B", L"C"}));
}

TEST_F(DefaultGatewayTest, TheUsersChoicePlaysNoPartInSetting) {
  configuration_.SetString(kChoice, L"GW1");
  SRStore store = store_;
  EXPECT_TRUE(store.SetDefaultGateway(L"GW2"));
  EXPECT_EQ(Marked(store.GetGateways()), (Wide{L"GW2"}));
}

}  // namespace

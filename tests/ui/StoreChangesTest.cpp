#include "ui/FactPrinting.h"
#include "view/StoreChanges.h"

#include <gmock/gmock.h>

#include <string>

namespace {

using Dialogs::Fact;
using Dialogs::StoreChanges;
using PropertyList::Array;
using PropertyList::Dictionary;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

Dictionary Gateway(const char* name, const char* url, bool isDefault = false) {
  return {{"GatewayName", name}, {"GatewayURL", url}, {"IsDefault", isDefault}};
}

Dictionary Store() {
  return {{"StoreName", "Sales"},
          {"StoreURL", "https://store.example"},
          {"StoreHost", "store.example"},
          {"StoreGateways", Array{Gateway("Main", "https://main", true), Gateway("Other", "https://other")}},
          {"InternalBeacons", Array{"http://inside"}},
          {"ExternalBeacons", Array{"https://one", "https://two"}}};
}

std::string HeldAndNew(const std::string& held, const std::string& replacement) {
  return "Held: \u2068" + held + "\u2069\nNew: \u2068" + replacement + "\u2069";
}

StoreChanges Between(const Dictionary& held, const Dictionary& replacement) {
  return StoreChanges::Of({{"StoreName", "Sales"}, {"HeldStore", held}, {"NewStore", replacement}});
}

// The changes when the new record has another value under the key.
std::vector<Fact> ChangesWith(const char* key, PropertyList::Value value) {
  Dictionary replacement = Store();
  replacement.Set(key, std::move(value));
  return Between(Store(), replacement).changes;
}

TEST(StoreChangesTest, TwoRecordsThatHoldTheSameDifferInNothing) {
  const StoreChanges same = Between(Store(), Store());
  EXPECT_TRUE(same.isKnown);
  EXPECT_THAT(same.changes, IsEmpty());
}

TEST(StoreChangesTest, TellWhichStoreIsHeld) {
  Dictionary held = Store();
  held.Set("StoreName", "Held");
  const StoreChanges changes = Between(held, Store());

  EXPECT_EQ(changes.name, "Held");
  EXPECT_THAT(changes.held, ElementsAre(Fact{"Name", "Held"}, Fact{"Address", "https://store.example"}));
}

TEST(StoreChangesTest, AnotherNameAndAnotherAddress) {
  EXPECT_THAT(ChangesWith("StoreName", "Shop"), ElementsAre(Fact{"Name", HeldAndNew("Sales", "Shop")}));
  EXPECT_THAT(
      ChangesWith("StoreURL", "https://store.example/other"),
      ElementsAre(Fact{"Address", HeldAndNew("https://store.example", "https://store.example/other")}));
}

TEST(StoreChangesTest, FormsOfAHostThatItsAddressDoesNotShowStandBelowIt) {
  const Dictionary store{{"StoreName", "S"},
                         {"StoreURL", "https://xn--mnchen-3ya.example"},
                         {"StoreHost", "münchen.example"},
                         {"StoreHostASCII", "xn--mnchen-3ya.example"}};
  EXPECT_EQ(Between(store, store).held[1].value, "https://xn--mnchen-3ya.example\nmünchen.example");
}

TEST(StoreChangesTest, GatewaysThatCameWentAndMoved) {
  EXPECT_THAT(
      ChangesWith("StoreGateways",
                  Array{Gateway("Main", "https://moved", true), Gateway("Third", "https://third")}),
      ElementsAre(
          Fact{"Gateway with another address", "Main\n" + HeldAndNew("https://main", "https://moved")},
          Fact{"Gateway added", "Third\nhttps://third"}, Fact{"Gateway removed", "Other\nhttps://other"}));
}

TEST(StoreChangesTest, AnotherDefaultGateway) {
  EXPECT_THAT(ChangesWith("StoreGateways",
                          Array{Gateway("Main", "https://main"), Gateway("Other", "https://other", true)}),
              ElementsAre(Fact{"Default gateway", HeldAndNew("Main", "Other")}));
  EXPECT_THAT(
      ChangesWith("StoreGateways", Array{Gateway("Main", "https://main"), Gateway("Other", "https://other")}),
      ElementsAre(Fact{"Default gateway", HeldAndNew("Main", "None")}));
}

TEST(StoreChangesTest, WhatElseAGatewayHasAnotherOf) {
  const auto with = [](std::uint32_t authentication, std::uint32_t edition, std::uint32_t mode) {
    Dictionary gateway = Gateway("Main", "https://main", true);
    gateway.Set("GatewayAuthType", authentication);
    gateway.Set("GatewayEdition", edition);
    gateway.Set("GatewayRewriteMode", mode);
    return Dictionary{{"StoreGateways", Array{std::move(gateway)}}};
  };
  const Dictionary held = with(2, 0, 1);
  EXPECT_THAT(Between(held, held).changes, IsEmpty());
  EXPECT_THAT(
      Between(held, with(1, 0, 1)).changes,
      ElementsAre(Fact{"Gateway with another way to log on", "Main\n" + HeldAndNew("Domain", "No log-on")}));
  EXPECT_THAT(
      Between(held, with(2, 2, 1)).changes,
      ElementsAre(Fact{"Gateway of another edition", "Main\n" + HeldAndNew("Standard", "Enterprise")}));
  EXPECT_THAT(Between(held, with(2, 0, 0)).changes,
              ElementsAre(Fact{"Gateway with another rewrite mode", "Main\n" + HeldAndNew("SG_RW", "NONE")}));
  EXPECT_THAT(Between(held, with(77, 0, 1)).changes,
              ElementsAre(Fact{"Gateway with another way to log on", "Main\n" + HeldAndNew("Domain", "77")}));
}

TEST(StoreChangesTest, BeaconsThatCameAndWent) {
  EXPECT_THAT(ChangesWith("InternalBeacons", Array{"http://inside", "http://more"}),
              ElementsAre(Fact{"Internal beacon added", "http://more"}));
  EXPECT_THAT(ChangesWith("ExternalBeacons", Array{"https://two", "https://three"}),
              ElementsAre(Fact{"External beacon added", "https://three"},
                          Fact{"External beacon removed", "https://one"}));
}

TEST(StoreChangesTest, TheOrderOfGatewaysAndBeaconsIsNoChange) {
  EXPECT_THAT(ChangesWith("ExternalBeacons", Array{"https://two", "https://one"}), IsEmpty());
  EXPECT_THAT(ChangesWith("StoreGateways",
                          Array{Gateway("Other", "https://other"), Gateway("Main", "https://main", true)}),
              IsEmpty());
}

TEST(StoreChangesTest, WhatWouldLookTheSameIsToldExactly) {
  const std::string common(200, 'x');
  EXPECT_THAT(
      Between(Dictionary{{"StoreName", common + "1"}}, Dictionary{{"StoreName", common + "2"}}).changes,
      ElementsAre(Fact{"Name", HeldAndNew(common + "1", common + "2")}));
  EXPECT_THAT(ChangesWith("StoreName", "Sales "),
              ElementsAre(Fact{"Name", HeldAndNew("Sales", "Sales<U+0020>")}));
  EXPECT_THAT(
      ChangesWith("StoreURL", "https://store.example\u00A0"),
      ElementsAre(Fact{"Address", HeldAndNew("https://store.example", "https://store.example<U+00A0>")}));
  EXPECT_THAT(ChangesWith("InternalBeacons", Array{"http://inside "}),
              ElementsAre(Fact{"Internal beacon added", "http://inside<U+0020>"},
                          Fact{"Internal beacon removed", "http://inside"}));
}

TEST(StoreChangesTest, GatewaysThatWouldLookTheSameAreToldExactly) {
  EXPECT_THAT(ChangesWith("StoreGateways",
                          Array{Gateway("Main", "https://main ", true), Gateway("Other ", "https://other")}),
              ElementsAre(Fact{"Gateway with another address",
                               "Main\n" + HeldAndNew("https://main", "https://main<U+0020>")},
                          Fact{"Gateway added", "Other<U+0020>\nhttps://other"},
                          Fact{"Gateway removed", "Other\nhttps://other"}));
  EXPECT_THAT(
      ChangesWith("StoreGateways", Array{Gateway("Main", "https://main"), Gateway("Other", "https://other"),
                                         Gateway("Main ", "https://main", true)}),
      ElementsAre(Fact{"Default gateway", HeldAndNew("Main", "Main<U+0020>")},
                  Fact{"Gateway added", "Main<U+0020>\nhttps://main"}));
}

TEST(StoreChangesTest, OfGatewaysWithOneNameEachCounts) {
  const Dictionary once{{"StoreGateways", Array{Gateway("Main", "https://main", true)}}};
  for (const char* const url : {"https://more", "https://main"}) {
    Dictionary twice = once;
    twice.Set("StoreGateways", Array{Gateway("Main", "https://main", true), Gateway("Main", url)});
    const std::string more = std::string("Main\n") + url;
    EXPECT_THAT(Between(twice, once).changes, ElementsAre(Fact{"Gateway removed", more}));
    EXPECT_THAT(Between(once, twice).changes, ElementsAre(Fact{"Gateway added", more}));
  }
  const Dictionary moved{
      {"StoreGateways", Array{Gateway("Main", "https://new", true), Gateway("Main", "https://more")}}};
  EXPECT_THAT(
      Between(once, moved).changes,
      ElementsAre(Fact{"Gateway with another address", "Main\n" + HeldAndNew("https://main", "https://new")},
                  Fact{"Gateway added", "Main\nhttps://more"}));
}

TEST(StoreChangesTest, OfManyChangesTheRestIsCounted) {
  Array beacons{"http://inside"};
  for (int number = 0; number < 102; ++number) beacons.push_back("http://" + std::to_string(number));
  const std::vector<Fact> changes = ChangesWith("InternalBeacons", beacons);
  ASSERT_EQ(changes.size(), 101U);
  EXPECT_EQ(changes[99], (Fact{"Internal beacon added", "http://99"}));
  EXPECT_EQ(changes[100], (Fact{"Further changes",
                                "\u2068"
                                "2\u2069 more"}));
  beacons.resize(101);
  EXPECT_EQ(ChangesWith("InternalBeacons", beacons).size(), 100U);
}

TEST(StoreChangesTest, EachLineIsIsolatedForItself) {
  const Dictionary held{{"StoreURL", "https://xn--mnchen-3ya.example"}, {"StoreHost", "münchen.example"}};
  const std::vector<Fact> changes = Between(held, Dictionary{{"StoreURL", "https://new"}}).changes;
  EXPECT_THAT(changes, ElementsAre(Fact{
                           "Address",
                           "Held: \u2068https://xn--mnchen-3ya.example\u2069\n\u2068münchen.example\u2069\n"
                           "New: \u2068https://new\u2069"}));
}

TEST(StoreChangesTest, OfAnOlderAgentOnlyTheNameIsKnown) {
  const StoreChanges changes = StoreChanges::Of({{"StoreName", "Sal\u202Ees"}});

  EXPECT_EQ(changes.name, "Sal<U+202E>es");
  EXPECT_FALSE(changes.isKnown);
  EXPECT_THAT(changes.held, IsEmpty());
  EXPECT_THAT(changes.changes, IsEmpty());
}

TEST(StoreChangesTest, NothingThatSomebodyElseWroteIsHiddenOrReordered) {
  const Dictionary evil{{"StoreName", "\u202E1"},
                        {"StoreURL", "\u202E2"},
                        {"StoreGateways", Array{Gateway("\u202E3", "\u202E4", true)}},
                        {"InternalBeacons", Array{"\u202E5"}},
                        {"ExternalBeacons", Array{"\u202E6"}}};
  for (const StoreChanges& changes : {Between(evil, Store()), Between(Store(), evil)}) {
    for (const Fact& fact : changes.changes) {
      EXPECT_EQ(fact.value.find("\u202E"), std::string::npos) << fact.caption;
    }
    EXPECT_GE(changes.changes.size(), 7U);
  }
}

}  // namespace

#include "SRLib/Records/ListMerge.h"
#include "core/CoreTest.h"
#include "support/StoreBuilders.h"

namespace {

using namespace ServiceRecords;
using namespace TestSupport;
using Wide = std::vector<std::wstring>;

class SRStoreMergeTest : public CoreTest {};

SRGateway ConfirmedGateway(const std::wstring& name) {
  SRGateway gateway = Gateway(name);
  gateway.SetTrustedByDS(true);
  return gateway;
}

TEST_F(SRStoreMergeTest, NameAddressAndKindComeFromTheNewerRecordAndTheIdStays) {
  SRStore held = Store(L"S", L"https://old");
  SRStore incoming = Store(L"T", L"https://new");
  incoming.SetSRType(SRType::unknown);
  held.Merge(incoming, false, configuration_);
  EXPECT_EQ(held.GetStoreID(), L"S");
  EXPECT_EQ(held.GetStoreName(), L"Name of T");
  EXPECT_EQ(held.GetStoreURL(), L"https://new");
  EXPECT_EQ(held.GetSRType(), SRType::unknown);
}

TEST_F(SRStoreMergeTest, ADocumentNeverRemovesAGatewayOrBeacon) {
  SRStore held = Store(L"S", L"https://s", {ConfirmedGateway(L"A"), Gateway(L"B")});
  held.AddBeacon(Beacon(L"in", true), BeaconType::Internal);
  held.AddBeacon(Beacon(L"out", true), BeaconType::External);
  held.Merge(Store(L"S", L"https://s"), false, configuration_);
  EXPECT_EQ(Names(held.GetGateways()), (Wide{L"A", L"B"}));
  EXPECT_EQ(Locations(held.Beacons(BeaconType::Internal)), (Wide{L"in"}));
  EXPECT_EQ(Locations(held.Beacons(BeaconType::External)), (Wide{L"out"}));
}

TEST_F(SRStoreMergeTest, TheDiscoveryServiceRemovesWhatItConfirmedAndNoLongerNames) {
  SRGateway trustedByUser = Gateway(L"user's");
  trustedByUser.SetTrustedByUser(true);
  SRStore held = Store(L"S", L"https://s",
                       {Gateway(L"1"), ConfirmedGateway(L"gone"), trustedByUser, ConfirmedGateway(L"kept")});
  for (const BeaconType type : {BeaconType::Internal, BeaconType::External}) {
    held.AddBeacon(Beacon(L"unconfirmed"), type);
    held.AddBeacon(Beacon(L"gone", true), type);
    held.AddBeacon(Beacon(L"kept", true), type);
  }
  SRStore incoming = Store(L"S", L"https://s", {Gateway(L"kept")});
  incoming.AddBeacon(Beacon(L"kept"), BeaconType::Internal);
  incoming.AddBeacon(Beacon(L"kept"), BeaconType::External);
  held.Merge(incoming, true, configuration_);
  EXPECT_EQ(Names(held.GetGateways()), (Wide{L"1", L"user's", L"kept"}));
  EXPECT_EQ(Locations(held.Beacons(BeaconType::Internal)), (Wide{L"unconfirmed", L"kept"}));
  EXPECT_EQ(Locations(held.Beacons(BeaconType::External)), (Wide{L"unconfirmed", L"kept"}));
}

TEST_F(SRStoreMergeTest, WhatIsInBothKeepsItsPlaceAndWhatIsNewFollowsInIncomingOrder) {
  SRStore held = Store(L"S", L"https://s", {Gateway(L"A"), Gateway(L"B"), Gateway(L"C")});
  held.MergeGateways({Gateway(L"Z"), Gateway(L"B"), Gateway(L"Y")}, false, configuration_);
  EXPECT_EQ(Names(held.GetGateways()), (Wide{L"A", L"B", L"C", L"Z", L"Y"}));

  std::list<SRBeacon> beacons{Beacon(L"1"), Beacon(L"2"), Beacon(L"3")};
  held.MergeBeacons(beacons, {Beacon(L"9"), Beacon(L"2"), Beacon(L"8")}, false);
  EXPECT_EQ(Locations(beacons), (Wide{L"1", L"2", L"3", L"9", L"8"}));
}

TEST_F(SRStoreMergeTest, AGatewayInBothTakesEveryFieldOfTheIncomingOne) {
  SRGateway own = ConfirmedGateway(L"A");
  own.SetTrustedByUser(true);
  SRStore held = Store(L"S", L"https://s", {own});
  SRGateway incoming = Gateway(L"A", L"https://new", true);
  incoming.SetEdition(SRGateway::GatewayEdition::Enterprise);
  incoming.SetAuthentication(SRGateway::GatewayAuthentication::SMS);
  incoming.SetAGMode(SRGateway::AGMode::FB_RW);
  held.MergeGateways({incoming}, false, configuration_);
  const SRGateway& merged = held.GetGateways().front();
  EXPECT_EQ(merged.GetLocation(), L"https://new");
  EXPECT_EQ(merged.GetEdition(), SRGateway::GatewayEdition::Enterprise);
  EXPECT_EQ(merged.GetAuthentication(), SRGateway::GatewayAuthentication::SMS);
  EXPECT_EQ(merged.GetAGMode(), SRGateway::AGMode::FB_RW);
  EXPECT_TRUE(merged.GetDefault());
  EXPECT_FALSE(merged.GetTrustedByUser());
  EXPECT_FALSE(merged.GetTrustedByDS());
}

TEST_F(SRStoreMergeTest, TheDiscoveryServiceVouchesForEveryGatewayThatItNames) {
  SRStore held = Store(L"S", L"https://s", {Gateway(L"A")});
  held.MergeGateways({Gateway(L"A"), Gateway(L"B")}, true, configuration_);
  for (const SRGateway& gateway : held.GetGateways()) EXPECT_TRUE(gateway.GetTrustedByDS());
}

TEST_F(SRStoreMergeTest, ANewGatewayFromADocumentLosesConfirmationAndKeepsTheUsersTrust) {
  SRGateway incoming = ConfirmedGateway(L"A");
  incoming.SetTrustedByUser(true);
  incoming.SetDefault(true);
  SRStore held = Store(L"S", L"https://s");
  held.MergeGateways({incoming}, false, configuration_);
  EXPECT_FALSE(held.GetGateways().front().GetTrustedByDS());
  EXPECT_TRUE(held.GetGateways().front().GetTrustedByUser());
  EXPECT_TRUE(held.GetGateways().front().GetDefault());
}

TEST_F(SRStoreMergeTest, ADocumentClearsTheConfirmationOfTheBeaconsThatItRepeats) {
  SRStore held;
  std::list<SRBeacon> beacons{Beacon(L"repeated", true), Beacon(L"other", true)};
  held.MergeBeacons(beacons, {Beacon(L"repeated"), Beacon(L"new", true)}, false);
  EXPECT_FALSE(beacons.front().GetDSConfirmed());
  EXPECT_TRUE(std::next(beacons.begin())->GetDSConfirmed());
  EXPECT_FALSE(beacons.back().GetDSConfirmed());
}

TEST_F(SRStoreMergeTest, TheDiscoveryServiceConfirmsEveryBeaconThatItNames) {
  SRStore held;
  std::list<SRBeacon> beacons{Beacon(L"repeated")};
  held.MergeBeacons(beacons, {Beacon(L"repeated"), Beacon(L"new")}, true);
  EXPECT_TRUE(beacons.front().GetDSConfirmed());
  EXPECT_TRUE(beacons.back().GetDSConfirmed());
}

TEST_F(SRStoreMergeTest, WithoutTheDiscoveryServiceWhatIsRepeatedTakesTheMarksOfTheNewerRecord) {
  SRStore held = Store(L"S", L"https://s", {Gateway(L"A"), ConfirmedGateway(L"B")});
  held.MergeGateways({ConfirmedGateway(L"A"), Gateway(L"B")}, false, configuration_);
  EXPECT_TRUE(held.GetGateways().front().GetTrustedByDS());
  EXPECT_FALSE(held.GetGateways().back().GetTrustedByDS());

  SRStore replaced = Store(L"S", L"https://s", {Gateway(L"A")});
  replaced.Merge(Store(L"S", L"https://s", {ConfirmedGateway(L"A")}), false, configuration_);
  EXPECT_TRUE(replaced.GetGateways().front().GetTrustedByDS());

  std::list<SRBeacon> beacons{Beacon(L"1"), Beacon(L"2", true)};
  held.MergeBeacons(beacons, {Beacon(L"1", true), Beacon(L"2")}, false);
  EXPECT_TRUE(beacons.front().GetDSConfirmed());
  EXPECT_FALSE(beacons.back().GetDSConfirmed());
}

TEST_F(SRStoreMergeTest, OfSeveralWithOneNameTheFirstIsChanged) {
  SRStore held = Store(L"S", L"https://s", {Gateway(L"A", L"https://1"), Gateway(L"A", L"https://2")});
  held.MergeGateways({Gateway(L"A", L"https://3"), Gateway(L"A", L"https://4"), Gateway(L"B"), Gateway(L"B")},
                     false, configuration_);
  EXPECT_EQ(Names(held.GetGateways()), (Wide{L"A", L"A", L"B"}));
  EXPECT_EQ(held.GetGateways().front().GetLocation(), L"https://4");
  EXPECT_EQ(std::next(held.GetGateways().begin())->GetLocation(), L"https://2");
}

// Counts how often one is looked at.
struct CountedMarks {
  static inline std::size_t looks = 0;
  static const std::wstring& Key(const SRBeacon& beacon) {
    ++looks;
    return beacon.Identity();
  }
  static bool Confirmed(const SRBeacon& beacon) { return beacon.GetDSConfirmed(); }
  static void SetConfirmed(SRBeacon& beacon, bool confirmed) { beacon.SetDSConfirmed(confirmed); }
};

TEST_F(SRStoreMergeTest, EachIsLookedAtAFewTimesHoweverManyThereAre) {
  constexpr std::size_t kCount = 1000;
  std::list<SRBeacon> mine;
  std::list<SRBeacon> incoming;
  for (std::size_t i = 0; i < kCount; ++i) {
    mine.push_back(Beacon(L"own " + std::to_wstring(i), true));
    incoming.push_back(Beacon(L"new " + std::to_wstring(i)));
  }
  MergeLists<CountedMarks>(mine, incoming, true);
  EXPECT_EQ(mine.size(), kCount);
  EXPECT_LE(CountedMarks::looks, 4 * kCount);
}

TEST_F(SRStoreMergeTest, ThePreviousDefaultIsTheDefaultAgain) {
  SRStore held = Store(L"S", L"https://s", {Gateway(L"A", L"", true), Gateway(L"B")});
  held.MergeGateways({Gateway(L"A"), Gateway(L"B", L"", true)}, false, configuration_);
  EXPECT_EQ(Marked(held.GetGateways()), (Wide{L"A"}));
}

TEST_F(SRStoreMergeTest, ADefaultThatIsGoneLeavesTheMarksOfTheNewerRecord) {
  SRGateway gone = ConfirmedGateway(L"A");
  gone.SetDefault(true);
  SRStore held = Store(L"S", L"https://s", {gone, Gateway(L"B")});
  held.MergeGateways({Gateway(L"B", L"", true)}, true, configuration_);
  EXPECT_EQ(Names(held.GetGateways()), (Wide{L"B"}));
  EXPECT_EQ(Marked(held.GetGateways()), (Wide{L"B"}));
}

TEST_F(SRStoreMergeTest, TheFirstGatewayOfAStoreWithoutMarksIsMarkedByAMerge) {
  SRStore held = Store(L"S", L"https://s", {Gateway(L"A"), Gateway(L"B")});
  held.MergeGateways({Gateway(L"A"), Gateway(L"B")}, false, configuration_);
  EXPECT_EQ(Marked(held.GetGateways()), (Wide{L"A"}));
}

TEST_F(SRStoreMergeTest, TheGatewayThatTheUserChoseIsMarkedByAMerge) {
  configuration_.SetString(L"SR\\UserSelectedGatewayName", L"B");
  SRStore held = Store(L"S", L"https://s", {Gateway(L"A", L"", true), Gateway(L"B")});
  held.MergeGateways({Gateway(L"A", L"", true), Gateway(L"B")}, false, configuration_);
  EXPECT_EQ(Marked(held.GetGateways()), (Wide{L"B"}));
}

TEST_F(SRStoreMergeTest, WhatAReplacementWouldMakeOfAStoreIsWhatMergeAndSaveMakeOfIt) {
  const SRStore bare = Store(L"S", L"https://s");
  SRStore full =
      Store(L"S", L"https://full",
            {Gateway(L"A", L"https://a"), ConfirmedGateway(L"B"), Gateway(L"", L"https://nameless")});
  full.AddBeacon(Beacon(L"in", true), BeaconType::Internal);
  full.AddBeacon(Beacon(L"out"), BeaconType::External);
  SRStore other = Store(L"S", L"https://other",
                        {Gateway(L"B", L"https://b", true), Gateway(L"C", L"https://c"), Gateway(L"", L"")});
  other.GetGateways().front().SetAuthentication(SRGateway::GatewayAuthentication::SMS);
  for (const wchar_t* const selected : {L"", L"B", L"C", L"nobody"}) {
    configuration_.SetString(L"SR\\UserSelectedGatewayName", selected);
    for (const SRStore& held : {bare, full, other}) {
      for (const SRStore& incoming : {bare, full, other}) {
        const std::size_t traced = trace_.Records().size();
        const SRStore after = held.AfterReplacement(incoming, configuration_);
        EXPECT_EQ(trace_.Records().size(), traced);
        SRStore merged = held;
        merged.Merge(incoming, false, configuration_);
        static_cast<void>(merged.GetInternalBeacons());
        static_cast<void>(merged.GetExternalBeacons(configuration_));
        EXPECT_TRUE(after.IsSameThroughout(merged));
      }
    }
  }
}

TEST_F(SRStoreMergeTest, AStoreWithoutGatewaysTakesTheMarksOfTheNewerRecord) {
  SRStore held = Store(L"S", L"https://s");
  held.MergeGateways({Gateway(L"A"), Gateway(L"B", L"", true)}, false, configuration_);
  EXPECT_EQ(Marked(held.GetGateways()), (Wide{L"B"}));
}

}  // namespace

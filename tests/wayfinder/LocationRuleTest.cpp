#include "libs/Wayfinder/Deciding/LocationRule.h"
#include "libs/Wayfinder/Probing/ProbeOutcome.h"

#include <gmock/gmock.h>

using Wayfinding::DecideLocation;
using Wayfinding::LocationDecision;
using Wayfinding::NetworkLocation;
using Wayfinding::PeerStanding;
using Wayfinding::ProbeAnswer;
using Wayfinding::ProbeOutcome;
using Wayfinding::StoreFindings;

namespace {

const ProbeOutcome kSilent{.reason = "https://a/: Timeout was reached"};
const ProbeOutcome kProven{.answer = ProbeAnswer::Answered, .proven = true, .peer = "10.0.0.1"};
const ProbeOutcome kPlain{.answer = ProbeAnswer::Answered, .peer = "10.0.0.2"};
const ProbeOutcome kPortal{
    .answer = ProbeAnswer::SomebodyElse, .peer = "10.0.0.254", .reason = "http://b/: redirect to portal"};
const ProbeOutcome kPortalPage{.answer = ProbeAnswer::Answered, .peer = "10.0.0.254"};
const ProbeOutcome kImpostor{.answer = ProbeAnswer::SomebodyElse,
                             .proven = true,
                             .peer = "10.0.0.254",
                             .reason = "https://b/: certificate for another name"};
const ProbeOutcome* const kOpen = nullptr;

LocationDecision Decide(const StoreFindings& findings, const std::string& tunnel = "",
                        PeerStanding standing = PeerStanding::Clear) {
  const auto decision = DecideLocation(
      findings, [&](const std::string& /*address*/) { return standing; },
      [&](const std::string& address) { return address == "10.0.0.1" ? tunnel : std::string(); });
  return decision.value_or(LocationDecision{});
}

NetworkLocation Locate(const StoreFindings& findings, PeerStanding standing = PeerStanding::Clear) {
  return Decide(findings, "", standing).location;
}

TEST(LocationRule, EveryInternalBeaconThatAnswersMakesALAN) {
  const auto decision = Decide({.internal = {&kProven, &kPlain}, .external = {&kSilent}});
  EXPECT_EQ(decision.location, NetworkLocation::kLAN);
  EXPECT_EQ(decision.reason.English(), "LAN, 2 of 2 internal beacons answered");
}

TEST(LocationRule, SomeInternalBeaconsMakeItPartlyInternal) {
  const auto decision = Decide({.internal = {&kProven, &kSilent}, .external = {&kProven}});
  EXPECT_EQ(decision.location, NetworkLocation::kPartlyInternal);
  EXPECT_EQ(decision.reason.English(),
            "partly internal, 1 of 2 internal beacons answered (https://a/: Timeout was reached)");
}

TEST(LocationRule, ATunnelToAnAnsweringInternalBeaconMakesItAVPN) {
  EXPECT_EQ(Decide({.internal = {&kPlain, &kProven}, .external = {}}, "wg0 (wireguard)").reason.English(),
            "VPN, 2 of 2 internal beacons answered, the route to 10.0.0.1 leaves through wg0 (wireguard)");
  EXPECT_EQ(Decide({.internal = {&kSilent, &kProven}, .external = {}}, "wg0").location,
            NetworkLocation::kVPN);
  EXPECT_EQ(Decide({.internal = {&kPlain}, .external = {&kProven}}, "wg0").location, NetworkLocation::kLAN);
  EXPECT_EQ(Decide({.internal = {&kSilent}, .external = {&kProven}}, "wg0").location,
            NetworkLocation::kOutside);
}

TEST(LocationRule, OnlyAnExternalAnswerMakesItOutside) {
  const auto decision = Decide({.internal = {&kSilent}, .external = {&kSilent, &kPlain}});
  EXPECT_EQ(decision.location, NetworkLocation::kOutside);
  EXPECT_EQ(decision.reason.English(),
            "outside, 0 of 1 internal beacons answered (https://a/: Timeout was reached), 1 of 2 external "
            "beacons answered (https://a/: Timeout was reached)");
}

TEST(LocationRule, NoAnswerAtAllMakesItNone) {
  EXPECT_EQ(Locate({.internal = {&kSilent}, .external = {&kSilent}}), NetworkLocation::kNone);
  EXPECT_EQ(Locate({.internal = {&kSilent}, .external = {}}), NetworkLocation::kNone);
  EXPECT_THAT(Decide({.internal = {&kSilent}, .external = {}, .networkIsUsable = false}).reason.English(),
              testing::StartsWith("none, no usable network"));
}

TEST(LocationRule, SomebodyElseInTheExternalBeaconsPlaceMakesItAHotspot) {
  const auto decision = Decide({.internal = {&kSilent}, .external = {&kPortal}});
  EXPECT_EQ(decision.location, NetworkLocation::kHotspot);
  EXPECT_EQ(
      decision.reason.English(),
      "hotspot, 0 of 1 internal beacons answered (https://a/: Timeout was reached), an external one was "
      "answered by somebody else (http://b/: redirect to portal)");
}

TEST(LocationRule, SomebodyElseInAnInternalBeaconsPlaceIsNoAnswer) {
  EXPECT_EQ(Locate({.internal = {&kPortal}, .external = {&kSilent}}), NetworkLocation::kNone);
  EXPECT_EQ(Locate({.internal = {&kPortal}, .external = {&kProven}}), NetworkLocation::kOutside);
}

TEST(LocationRule, APlainInternalAnswerFromAnExposedAddressDoesNotCount) {
  EXPECT_EQ(Locate({.internal = {&kPlain}, .external = {&kPortal}}), NetworkLocation::kLAN);
  EXPECT_EQ(Locate({.internal = {&kPlain}, .external = {&kPortal}}, PeerStanding::Exposed),
            NetworkLocation::kHotspot);
  EXPECT_EQ(Locate({.internal = {&kPlain}, .external = {&kPlain}}, PeerStanding::Exposed),
            NetworkLocation::kOutside);
  EXPECT_EQ(Locate({.internal = {&kPlain}, .external = {}}, PeerStanding::Exposed), NetworkLocation::kNone);
  EXPECT_EQ(Locate({.internal = {&kPlain, &kProven}, .external = {}}, PeerStanding::Exposed),
            NetworkLocation::kPartlyInternal)
      << "a certificate cannot be faked";
  EXPECT_EQ(Locate({.internal = {&kPlain}, .external = {&kPlain}}, PeerStanding::Vouched),
            NetworkLocation::kLAN);
}

TEST(LocationRule, AnAddressWhoseStandingIsOpenIsWaitedForIfItsAnswerMatters) {
  EXPECT_EQ(Locate({.internal = {&kPlain}, .external = {&kProven}}, PeerStanding::Open),
            NetworkLocation::kDeciding);
  EXPECT_EQ(Locate({.internal = {&kProven, &kSilent}, .external = {&kPlain}}, PeerStanding::Open),
            NetworkLocation::kPartlyInternal);
}

TEST(LocationRule, EachAddressHasAStandingOfItsOwn) {
  const auto locate = [](const StoreFindings& findings, PeerStanding plain, PeerStanding page) {
    const auto decision = DecideLocation(
        findings, [&](const std::string& peer) { return peer == kPlain.peer ? plain : page; },
        [](const std::string& /*address*/) { return std::string(); });
    return decision.value_or(LocationDecision{}).location;
  };
  const StoreFindings decided{.internal = {&kPlain, &kPortalPage}, .external = {&kSilent}};
  EXPECT_EQ(locate(decided, PeerStanding::Clear, PeerStanding::Open), NetworkLocation::kDeciding);
  EXPECT_EQ(locate(decided, PeerStanding::Clear, PeerStanding::Exposed), NetworkLocation::kPartlyInternal);
  EXPECT_EQ(locate(decided, PeerStanding::Vouched, PeerStanding::Open), NetworkLocation::kDeciding);
  EXPECT_EQ(locate(decided, PeerStanding::Vouched, PeerStanding::Clear), NetworkLocation::kLAN);
}

TEST(LocationRule, TheReasonNamesTheFirstBeaconThatDidNotCount) {
  const ProbeOutcome refused{.reason = "https://c/: Connection refused"};
  EXPECT_EQ(Decide({.internal = {&kSilent, &refused}, .external = {}}).reason.English(),
            "none, 0 of 2 internal beacons answered (https://a/: Timeout was reached), 0 of 0 external "
            "beacons answered");
  EXPECT_EQ(Decide({.internal = {&kPlain}, .external = {}}, "", PeerStanding::Exposed).reason.English(),
            "none, 0 of 1 internal beacons answered (10.0.0.2 answers for others too), 0 of 0 external "
            "beacons answered");
  EXPECT_THAT(Decide({.internal = {&kSilent}, .external = {&kPortal, &kImpostor}}).reason.English(),
              testing::EndsWith("(http://b/: redirect to portal)"));
}

TEST(LocationRule, APortalOutweighsPlainExternalAnswersAndAProvenOneOutweighsIt) {
  EXPECT_EQ(Locate({.internal = {&kSilent}, .external = {&kPortalPage, &kPortal}}),
            NetworkLocation::kHotspot);
  EXPECT_EQ(Locate({.internal = {&kSilent}, .external = {&kPortal, &kProven}}), NetworkLocation::kOutside);
}

TEST(LocationRule, APortalIsSeenByItsCertificateInAnInternalBeaconsPlaceToo) {
  EXPECT_EQ(Locate({.internal = {&kImpostor, &kPortalPage}, .external = {&kSilent}}), NetworkLocation::kNone);
  EXPECT_EQ(Locate({.internal = {&kImpostor, &kPortalPage}, .external = {&kPortal}}),
            NetworkLocation::kHotspot);
  EXPECT_EQ(Locate({.internal = {&kImpostor, &kPortalPage}, .external = {}}, PeerStanding::Vouched),
            NetworkLocation::kPartlyInternal);
  EXPECT_EQ(Locate({.internal = {&kImpostor, &kPortalPage}, .external = {}}, PeerStanding::Open),
            NetworkLocation::kDeciding);
  EXPECT_EQ(Locate({.internal = {&kImpostor, &kPlain}, .external = {}}), NetworkLocation::kPartlyInternal)
      << "another machine's answer";
  EXPECT_EQ(Locate({.internal = {&kPortal, &kPortalPage}, .external = {}}), NetworkLocation::kPartlyInternal)
      << "servers of one's own redirect";
}

TEST(LocationRule, ServersOnTheLoopbackAddressAreNotTakenForAPortal) {
  const ProbeOutcome here{.answer = ProbeAnswer::Answered, .peer = "127.0.0.1"};
  const ProbeOutcome redirect{.answer = ProbeAnswer::SomebodyElse, .peer = "127.0.0.1"};
  EXPECT_EQ(Locate({.internal = {&here}, .external = {&redirect}}, PeerStanding::Exposed),
            NetworkLocation::kLAN);
}

TEST(LocationRule, WhereAnInternalBeaconAnswersTheExternalOnesAreNotWaitedFor) {
  EXPECT_EQ(Locate({.internal = {&kProven}, .external = {kOpen}}), NetworkLocation::kLAN);
  EXPECT_EQ(Locate({.internal = {&kPlain}, .external = {kOpen}}), NetworkLocation::kLAN);
  EXPECT_EQ(Locate({.internal = {&kProven, &kSilent}, .external = {kOpen}}),
            NetworkLocation::kPartlyInternal);
}

TEST(LocationRule, WhatIsNeededIsWaitedFor) {
  EXPECT_EQ(Locate({.internal = {kOpen, &kProven}, .external = {}}), NetworkLocation::kDeciding);
  EXPECT_EQ(Locate({.internal = {kOpen}, .external = {&kProven}}), NetworkLocation::kDeciding);
  EXPECT_EQ(Locate({.internal = {&kSilent}, .external = {&kPlain, kOpen}}), NetworkLocation::kDeciding);
  EXPECT_EQ(Locate({.internal = {&kSilent}, .external = {&kProven, kOpen}}), NetworkLocation::kDeciding);
  EXPECT_EQ(Locate({.internal = {&kPlain}, .external = {kOpen}}, PeerStanding::Exposed),
            NetworkLocation::kDeciding);
}

}  // namespace

#include "libs/Wayfinder/Deciding/PeerStandings.h"
#include "libs/Wayfinder/Probing/ProbeOutcome.h"

#include <gtest/gtest.h>

using Wayfinding::PeerStanding;
using Wayfinding::PeerStandings;
using Wayfinding::ProbeAnswer;
using Wayfinding::ProbeOutcome;

namespace {

constexpr char kPeer[] = "10.0.0.254";
const ProbeOutcome kPage{.answer = ProbeAnswer::Answered, .peer = kPeer, .heardFrom = {kPeer}};
const ProbeOutcome kTrouble{.heardFrom = {"10.0.0.1", kPeer}};
const ProbeOutcome kVerified{
    .answer = ProbeAnswer::Answered, .proven = true, .peer = kPeer, .heardFrom = {kPeer}};
const ProbeOutcome kOtherName{
    .answer = ProbeAnswer::SomebodyElse, .proven = true, .peer = kPeer, .heardFrom = {kPeer}};

PeerStanding StandingAfter(const ProbeOutcome& outcome, bool asExternal) {
  PeerStandings standings;
  const bool changed = standings.Take(outcome, asExternal);
  EXPECT_EQ(changed, standings.Of(kPeer) != PeerStanding::Clear);
  return standings.Of(kPeer);
}

TEST(PeerStandings, WhateverIsSaidInAnExternalBeaconsNameExposes) {
  EXPECT_EQ(StandingAfter(kPage, true), PeerStanding::Exposed);
  EXPECT_EQ(StandingAfter(kTrouble, true), PeerStanding::Exposed);
  EXPECT_EQ(StandingAfter(kOtherName, true), PeerStanding::Exposed);
  EXPECT_EQ(StandingAfter(kPage, false), PeerStanding::Clear);
  EXPECT_EQ(StandingAfter({}, true), PeerStanding::Clear) << "it was silent";
}

TEST(PeerStandings, ACertificateThatVerifiesVouchesInEitherOrder) {
  EXPECT_EQ(StandingAfter(kVerified, false), PeerStanding::Vouched);
  EXPECT_EQ(StandingAfter(kVerified, true), PeerStanding::Vouched);
  PeerStandings standings;
  EXPECT_TRUE(standings.Take(kPage, true));
  EXPECT_FALSE(standings.Take(kPage, true)) << "that was known";
  EXPECT_TRUE(standings.Take(kVerified, false));
  EXPECT_FALSE(standings.Take(kPage, true));
  EXPECT_EQ(standings.Of(kPeer), PeerStanding::Vouched);
}

}  // namespace

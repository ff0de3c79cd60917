#include "SRLib/SRBeacon.h"
#include "support/StoreBuilders.h"

#include <gtest/gtest.h>

namespace {

using TestSupport::Beacon;
using Beacons = std::list<ServiceRecords::SRBeacon>;

TEST(SRBeaconTest, ANewBeaconIsEmptyAndNotConfirmed) {
  const ServiceRecords::SRBeacon beacon;
  EXPECT_EQ(beacon.GetLocation(), L"");
  EXPECT_FALSE(beacon.GetDSConfirmed());
}

TEST(SRBeaconTest, TheLocationAloneIdentifiesABeacon) {
  EXPECT_TRUE(Beacon(L"https://a", true) == Beacon(L"https://a", false));
  EXPECT_FALSE(Beacon(L"https://a") == Beacon(L"https://a/"));
}

TEST(SRBeaconTest, LocationsThatDifferOnlyInLetterCaseAreDifferent) {
  EXPECT_FALSE(Beacon(L"https://a") == Beacon(L"https://A"));
}

TEST(SRBeaconTest, AConfirmedBeaconMissingFromTheListIsReported) {
  const Beacons others{Beacon(L"https://b"), Beacon(L"https://A")};
  EXPECT_TRUE(Beacon(L"https://a", true).ConfirmedButNotInList(&others));
}

TEST(SRBeaconTest, AConfirmedBeaconThatTheListNamesIsNotReported) {
  const Beacons others{Beacon(L"https://b"), Beacon(L"https://a")};
  EXPECT_FALSE(Beacon(L"https://a", true).ConfirmedButNotInList(&others));
}

TEST(SRBeaconTest, AnUnconfirmedBeaconIsNeverReported) {
  const Beacons none;
  EXPECT_FALSE(Beacon(L"https://a", false).ConfirmedButNotInList(&none));
}

}  // namespace

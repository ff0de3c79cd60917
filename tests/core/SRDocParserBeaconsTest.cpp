#include "core/ParserTest.h"

namespace {

using namespace ServiceRecords;
using namespace TestSupport;

class SRDocParserBeaconsTest : public ParserTest {
 protected:
  static constexpr char kIncorrect[] = "SR XML Parsing error: incorrect beacons list";
  static constexpr char kEmpty[] = "SR XML Parsing warning: empty beacon address";
};

TEST_F(SRDocParserBeaconsTest, BothListsKeepTheOrderOfTheDocumentAndAreNotConfirmed) {
  ASSERT_TRUE(ParseServices(Service(L"s",
                                    L"<External><Beacon>3</Beacon></External><Internal><Beacon> 2 </Beacon>"
                                    L"<group><Beacon>1</Beacon></group><Beacon>2</Beacon></Internal>")));
  EXPECT_EQ(Locations(Held(L"s").Beacons(BeaconType::Internal)), (Wide{L"2", L"1", L"2"}));
  EXPECT_EQ(Locations(Held(L"s").Beacons(BeaconType::External)), (Wide{L"3"}));
  for (const SRBeacon& beacon : Held(L"s").Beacons(BeaconType::Internal))
    EXPECT_FALSE(beacon.GetDSConfirmed());
  EXPECT_EQ(ReadingRecords(), Records{});
}

TEST_F(SRDocParserBeaconsTest, AStoreWithoutListsHasNoBeacons) {
  ASSERT_TRUE(ParseServices(Service(L"s", L"<Beacon>outside</Beacon>")));
  EXPECT_TRUE(Held(L"s").Beacons(BeaconType::Internal).empty());
  EXPECT_TRUE(Held(L"s").Beacons(BeaconType::External).empty());
}

TEST_F(SRDocParserBeaconsTest, ABeaconOfSpacesIsSkippedWithAWarning) {
  ASSERT_TRUE(ParseServices(Service(L"s", L"<Internal><Beacon> \n </Beacon><Beacon>in</Beacon></Internal>")));
  EXPECT_EQ(Locations(Held(L"s").Beacons(BeaconType::Internal)), (Wide{L"in"}));
  EXPECT_EQ(ReadingRecords(), (Records{{0, kDocParserFile, kEmpty}}));
}

TEST_F(SRDocParserBeaconsTest, AnEmptyBeaconEndsTheReadingWithoutItsStore) {
  for (const wchar_t* list : {L"<Internal><Beacon/></Internal>", L"<External><Beacon></Beacon></External>"}) {
    EXPECT_TRUE(ParseServices(Service(L"before") + Service(L"broken", list) + Service(L"behind")));
    EXPECT_EQ(Ids(stores_), (Wide{L"before"}));
    EXPECT_EQ(ReadingRecords(), (Records{{2, kDocParserFile, kIncorrect}}));
  }
}

TEST_F(SRDocParserBeaconsTest, AnEmptySectionInABeaconIsAnEmptyAddress) {
  ASSERT_TRUE(ParseServices(Service(L"s", L"<Internal><Beacon><![CDATA[]]></Beacon></Internal>")));
  EXPECT_TRUE(Held(L"s").Beacons(BeaconType::Internal).empty());
  EXPECT_EQ(ReadingRecords(), (Records{{0, kDocParserFile, kEmpty}}));
}

TEST_F(SRDocParserBeaconsTest, TheFirstChildAloneIsTheAddress) {
  ASSERT_TRUE(ParseServices(Service(L"s",
                                    L"<Internal><Beacon><![CDATA[ in ]]>more</Beacon>"
                                    L"<Beacon><!--note-->in</Beacon></Internal>")));
  EXPECT_EQ(Locations(Held(L"s").Beacons(BeaconType::Internal)), (Wide{L"in", L"note"}));
}

TEST_F(SRDocParserBeaconsTest, AnElementInsideABeaconIsAnEmptyAddress) {
  ASSERT_TRUE(ParseServices(Service(L"s", L"<Internal><Beacon><b>in</b></Beacon></Internal>")));
  EXPECT_TRUE(Held(L"s").Beacons(BeaconType::Internal).empty());
  EXPECT_EQ(ReadingRecords(), (Records{{0, kDocParserFile, kEmpty}}));
}

}  // namespace

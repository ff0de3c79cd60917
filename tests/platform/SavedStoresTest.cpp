#include "MacConfiguration.h"
#include "SRLib/SRRegistryConfig.h"
#include "SRLib/SavedStores.h"
#include "core/StoreBuilders.h"
#include "platform/FileSystemFaults.h"
#include "platform/FullDisk.h"
#include "platform/PreferencesFolder.h"
#include "platform/TestFiles.h"
#include "support/SystemLogFake.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>

namespace {

namespace fs = std::filesystem;
using namespace ServiceRecords;
using namespace testsupport;
using testing::ElementsAre;
using testing::IsEmpty;
using Wide = std::vector<std::wstring>;

// The list in the real configuration's file.
class SavedStoresTest : public testing::Test {
 protected:
  SavedStoresTest() {
    fs::remove_all(file_.parent_path());
    fs::create_directories(file_.parent_path());
    static_cast<void>(SystemLogFake::TakeLines());
  }

  static SRStore FullStore(const std::wstring& id) {
    SRGateway full = Gateway(L"G\u00e4teway <1>", L"https://gw", true);
    full.SetEdition(SRGateway::GatewayEdition::Enterprise);
    full.SetAuthentication(SRGateway::GatewayAuthentication::GatewayKnows);
    full.SetAGMode(SRGateway::AGMode::ENTCVPN_RW);
    full.SetTrustedByUser(true);
    full.SetTrustedByDS(true);
    SRStore store = Store(id, L"https://s/\u20ac", {full, Gateway(L" \t\r\nB "), Gateway(L"A")});
    store.SetSRType(SRType::unknown);
    for (const wchar_t* location : {L"https://z", L"https://a"})
      store.AddBeacon(Beacon(location, true), BeaconType::Internal);
    store.AddBeacon(Beacon(L"https://out"), BeaconType::External);
    return store;
  }

  std::optional<StoreMap> Restore() {
    SavedStores::Reading reading = SavedStores::Read();
    saved_.TakeReading(reading);
    return std::move(reading.stores);
  }

  const fs::path file_ = preferenceFile(true);
  SavedStores saved_;
};

TEST_F(SavedStoresTest, EverythingComesBackFromTheFile) {
  StoreMap stores = Map({FullStore(L"two"), FullStore(L"one & only")});
  saved_.Save(stores);
  const std::optional<StoreMap> restored = Restore();
  ASSERT_TRUE(restored.has_value());
  ASSERT_EQ(Ids(*restored), (Wide{L"one & only", L"two"}));
  for (const auto& [id, store] : *restored) {
    EXPECT_EQ(store.GetStoreID(), id);
    EXPECT_EQ(store.GetStoreName(), L"Name of " + id);
    EXPECT_EQ(store.GetStoreURL(), L"https://s/\u20ac");
    EXPECT_EQ(store.GetSRType(), SRType::unknown);
    ASSERT_EQ(Names(store.GetGateways()), (Wide{L"G\u00e4teway <1>", L" \t\r\nB ", L"A"}));
    const SRGateway& gateway = store.GetGateways().front();
    EXPECT_EQ(gateway.GetLocation(), L"https://gw");
    EXPECT_EQ(gateway.GetEdition(), SRGateway::GatewayEdition::Enterprise);
    EXPECT_EQ(gateway.GetAuthentication(), SRGateway::GatewayAuthentication::GatewayKnows);
    EXPECT_EQ(gateway.GetAGMode(), SRGateway::AGMode::ENTCVPN_RW);
    EXPECT_TRUE(gateway.GetTrustedByUser() && gateway.GetTrustedByDS() && gateway.GetDefault());
    EXPECT_FALSE(store.GetGateways().back().GetTrustedByDS() || store.GetGateways().back().GetDefault());
    EXPECT_EQ(Locations(store.Beacons(BeaconType::Internal)), (Wide{L"https://z", L"https://a"}));
    EXPECT_TRUE(store.Beacons(BeaconType::Internal).front().GetDSConfirmed());
    EXPECT_EQ(Locations(store.Beacons(BeaconType::External)), (Wide{L"https://out"}));
    EXPECT_FALSE(store.Beacons(BeaconType::External).front().GetDSConfirmed());
  }
}

TEST_F(SavedStoresTest, WhicheverReadFailsTheListIsWholeOrNotRead) {
  StoreMap stores = Map({Store(L"one", L"https://s", {Gateway(L"GW", L"https://gw")})});
  saved_.Save(stores);
  bool everythingWasRead = false;
  int failed = 0;
  for (int failing = 0; !everythingWasRead; ++failing) {
    int reads = 0;
    FileSystemFaults faults;
    faults.read = [&](int) { return reads++ == failing ? EIO : 0; };
    const std::optional<StoreMap> restored = Restore();
    everythingWasRead = reads <= failing;
    EXPECT_EQ(restored.has_value(), everythingWasRead) << failing;
    EXPECT_EQ(saved_.CurrentState(),
              everythingWasRead ? SavedStores::State::Good : SavedStores::State::Unreadable);
    failed += restored.has_value() ? 0 : 1;
  }
  EXPECT_GT(failed, 20);
  EXPECT_THAT(SystemLogFake::TakeLines(),
              ElementsAre("the stores cannot be read, and are not changed until they can: " + file_.string() +
                          ": Input/output error"))
      << "once for all these tries, none of which succeeded before the last";
}

TEST_F(SavedStoresTest, ASaveThatFailedAnywhereIsKnownAndDoneAgain) {
  StoreMap stores = Map({FullStore(L"one"), FullStore(L"two")});
  saved_.Save(stores);
  const std::string before = ReadFile(file_);
  stores.erase(L"one");
  {
    const FullDisk full(10);
    saved_.Save(stores);
    saved_.Save(stores);
  }
  EXPECT_EQ(saved_.CurrentState(), SavedStores::State::Unsaved);
  EXPECT_EQ(ReadFile(file_), before);
  EXPECT_THAT(SystemLogFake::TakeLines(), ElementsAre("the stores cannot be saved, which is tried again: " +
                                                      file_.string() + ": File too large"));
  saved_.Save(stores);
  EXPECT_EQ(saved_.CurrentState(), SavedStores::State::Good);
  EXPECT_EQ(Ids(SRRegistryConfig().RestoreStores()), (Wide{L"two"}));
  EXPECT_THAT(SystemLogFake::TakeLines(), IsEmpty());
}

}  // namespace

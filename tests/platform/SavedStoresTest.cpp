#include "Files/PreferenceFile.h"
#include "MacConfiguration.h"
#include "SRLib/Provider/SavedStores.h"
#include "SRLib/SRRegistryConfig.h"
#include "platform/PreferencesFolder.h"
#include "support/CapturedSystemLog.h"
#include "support/FileSystemFaults.h"
#include "support/FullDisk.h"
#include "support/StoreBuilders.h"
#include "support/TestFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <thread>

namespace {

namespace fs = std::filesystem;
using namespace ServiceRecords;
using namespace TestSupport;
using testing::ElementsAre;
using testing::IsEmpty;
using Wide = std::vector<std::wstring>;

const CMacConfiguration kConfiguration(true);

// Saves the list in a process of its own, which is killed in the middle: before the call with that number of
// those that reach the file system. False when it has made fewer, and has ended by itself.
bool DiesWhileSaving(StoreMap stores, int call) {
  const pid_t child = ::fork();
  if (child == 0) {
    FileSystemFaults faults;
    int calls = 0;
    faults.write = [&](int) { return calls++ == call ? ::raise(SIGKILL) : 0; };
    faults.read = faults.flock = faults.fchmod = faults.fsync = faults.rename = faults.write;
    SavedStores(kConfiguration).Save(stores);
    ::_exit(0);
  }
  int status = 0;
  while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  return WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL;
}

// The list in the real configuration's file.
class SavedStoresTest : public testing::Test {
 protected:
  SavedStoresTest() {
    fs::remove_all(file_.parent_path());
    fs::create_directories(file_.parent_path());
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
    SavedStores::Reading reading = saved_.Read();
    saved_.TakeReading(reading);
    return std::move(reading.stores);
  }

  CapturedSystemLog systemLog_;
  const fs::path file_ = Agent::preferenceFile(true);
  SavedStores saved_{kConfiguration};
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
  EXPECT_EQ(failed, 2) << "the file is read once: its content, and the end of it";
  EXPECT_THAT(systemLog_.TakeLines(),
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
  EXPECT_THAT(systemLog_.TakeLines(), ElementsAre("the stores cannot be saved, which is tried again: " +
                                                  file_.string() + ": File too large"));
  saved_.Save(stores);
  EXPECT_EQ(saved_.CurrentState(), SavedStores::State::Good);
  EXPECT_EQ(Ids(SRRegistryConfig(kConfiguration).RestoreStores()), (Wide{L"two"}));
  EXPECT_THAT(systemLog_.TakeLines(), IsEmpty());
}

TEST_F(SavedStoresTest, AListIsSavedByOneReplacementOfTheFile) {
  StoreMap stores = Map({FullStore(L"one"), FullStore(L"two")});
  int renames = 0;
  FileSystemFaults faults;
  faults.rename = [&](int) { return ++renames, 0; };
  saved_.Save(stores);
  EXPECT_EQ(renames, 1);
}

TEST_F(SavedStoresTest, WhatElseIsInTheFileStaysThere) {
  kConfiguration.SetString(L"SR\\UserSelectedGatewayName", L"GW");
  kConfiguration.SetString(L"Another\\Name", L"value");
  StoreMap stores = Map({FullStore(L"one")});
  saved_.Save(stores);
  std::wstring value;
  EXPECT_TRUE(kConfiguration.GetString(L"SR\\UserSelectedGatewayName", L"", value) && value == L"GW");
  EXPECT_TRUE(kConfiguration.GetString(L"Another\\Name", L"", value) && value == L"value");
}

TEST_F(SavedStoresTest, AKillAtAnyMomentLeavesTheOldListOrTheNewOne) {
  StoreMap first = Map({FullStore(L"one"), FullStore(L"two")});
  StoreMap second = Map({FullStore(L"two"), FullStore(L"three")});
  saved_.Save(second);
  const std::string afterwards = ReadFile(file_);
  int old = 0;
  int replaced = 0;
  for (int call = 0; saved_.Save(first), DiesWhileSaving(second, call); ++call) {
    const std::string left = ReadFile(file_);
    const Wide ids = Ids(SRRegistryConfig(kConfiguration).RestoreStores());
    if (left == afterwards) {
      EXPECT_EQ(ids, (Wide{L"three", L"two"})) << call;
      ++replaced;
    } else {
      EXPECT_EQ(ids, (Wide{L"one", L"two"})) << call;
      ++old;
    }
  }
  EXPECT_EQ(ReadFile(file_), afterwards) << "who was not killed has saved";
  EXPECT_GT(old, 3);
  EXPECT_EQ(replaced, 1) << "killed when all that was left to do was to flush the folder";
}

TEST_F(SavedStoresTest, WhoReadsWhileTheListIsSavedFindsTheOldListOrTheNewOne) {
  StoreMap lists[] = {Map({FullStore(L"one"), FullStore(L"two")}), Map({FullStore(L"three")})};
  saved_.Save(lists[0]);
  std::atomic<bool> isSaving = true;
  std::vector<std::jthread> readers;
  for (int reader = 0; reader < 3; ++reader) {
    readers.emplace_back([&isSaving] {
      while (isSaving) {
        const Wide ids = Ids(SRRegistryConfig(kConfiguration).RestoreStores());
        EXPECT_TRUE(ids == (Wide{L"one", L"two"}) || ids == (Wide{L"three"})) << ids.size();
      }
    });
  }
  for (std::size_t save = 1; save <= 30; ++save) saved_.Save(lists[save % 2]);
  isSaving = false;
  readers.clear();
  EXPECT_EQ(saved_.CurrentState(), SavedStores::State::Good);
}

TEST_F(SavedStoresTest, OnADiskWithTooLittleRoomTheListStaysAsItWas) {
  StoreMap first = Map({FullStore(L"one"), FullStore(L"two")});
  saved_.Save(first);
  const std::string before = ReadFile(file_);
  StoreMap second = Map({FullStore(L"one"), FullStore(L"two"), FullStore(L"three")});
  rlim_t room = 0;
  for (; ReadFile(file_) == before; room += 97) {
    const FullDisk full(room);
    saved_.Save(second);
    EXPECT_EQ(saved_.CurrentState(),
              ReadFile(file_) == before ? SavedStores::State::Unsaved : SavedStores::State::Good);
    ASSERT_LT(room, 100000U);
  }
  EXPECT_GT(room, before.size());
  EXPECT_EQ(Ids(SRRegistryConfig(kConfiguration).RestoreStores()), (Wide{L"one", L"three", L"two"}));
  EXPECT_THAT(NamesIn(file_.parent_path()), ElementsAre(file_.filename().string()));
}

}  // namespace

#include "MacWayfinderProxy.h"
#include "libs/Text/TextHelpers.h"
#include "libs/Wayfinder/Wayfinder.h"
#include "support/RawServer.h"
#include "support/StoreBuilders.h"

#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <map>
#include <mutex>

namespace {

using ServiceRecords::BeaconType;
using ServiceRecords::SRStore;
using ServiceRecords::StoreSnapshot;
using TestSupport::Beacon;

std::mutex g_locationMutex;
std::condition_variable g_locationChanged;
std::map<std::string, std::uint32_t> g_givenOut;

// Published stores, the real location library and real servers.
class PublishedStoresTest : public testing::Test {
 protected:
  PublishedStoresTest() {
    WFSetLocationFunc([](const char* storeURL, std::uint32_t location) {
      const std::lock_guard lock(g_locationMutex);
      g_givenOut[storeURL] = location;
      g_locationChanged.notify_all();
    });
  }
  ~PublishedStoresTest() override {
    WFSetLocationFunc(nullptr);
    ServiceRecords::SetAllServiceRecordsToList(std::make_shared<const StoreSnapshot>());
  }

  // The first location that is decided for the store.
  static std::uint32_t LocationOf(const SRStore& store) {
    ServiceRecords::SetAllServiceRecordsToList(
        std::make_shared<const StoreSnapshot>(TestSupport::Map({store})));
    const std::string url = util::narrow(store.GetStoreURL());
    std::unique_lock lock(g_locationMutex);
    const bool decided = g_locationChanged.wait_for(lock, std::chrono::seconds(30), [&url] {
      return g_givenOut.contains(url) && g_givenOut[url] != Wayfinder::kDeciding;
    });
    EXPECT_TRUE(decided);
    return ServiceRecords::LocationRelativeToStoreURL(store.GetStoreURL());
  }

  const TestSupport::RawServer server_{{TestSupport::kEmptyAnswer}};
};

TEST_F(PublishedStoresTest, AStoresInternalBeaconIsAsked) {
  SRStore store = TestSupport::Store(L"s", L"http://127.0.0.1:9/in");
  store.AddBeacon(Beacon(server_.Address()), BeaconType::Internal);
  EXPECT_EQ(LocationOf(store), Wayfinder::kLAN);
  EXPECT_FALSE(server_.Requests().empty());
}

TEST_F(PublishedStoresTest, AStoresExternalBeaconIsAsked) {
  SRStore store = TestSupport::Store(L"s", L"http://127.0.0.1:9/out");
  store.AddBeacon(Beacon(server_.Address()), BeaconType::External);
  EXPECT_EQ(LocationOf(store), Wayfinder::kOutside);
  EXPECT_FALSE(server_.Requests().empty());
}

}  // namespace

#include "support/AgentTest.h"

#include <algorithm>

namespace {

using TestSupport::AgentTest;

// What only reads is answered at any time, by another program than the one that waits for a change.
class Reads : public AgentTest {
 protected:
  void ExpectAnswersAbout(const std::string& id, const std::string& name) {
    TestSupport::BusClient reader(agent_.BusAddress());
    const std::string url = Store(id, name).url;
    EXPECT_EQ(reader.ServiceRecords("storeForID", {id})["StoreName"], name);
    EXPECT_EQ(reader.ServiceRecords("allStores").size(), 1U);
    EXPECT_EQ(reader.ServiceRecords("uiBundlePath"),
              (agent_.BundleFolder() / "PlugIns/ServiceRecordUI.bundle").string());
    EXPECT_EQ(StateOfSavedStores(reader), "good");
    EXPECT_EQ(reader.Beacons("getCurrentGatewayForStore", {url})["GatewayName"], "Head Office");
    EXPECT_TRUE(reader.Beacons("checkLocationForStore", {url}).is_number());
    EXPECT_TRUE(reader.Beacons("networkReachabilityFlags").is_number());
    for (const std::string service : {"ServiceRecords", "Beacons"}) {
      reader.Call("com.morvane." + service, "/com/morvane/" + service, "org.freedesktop.DBus.Peer", "Ping");
    }
  }

  [[nodiscard]] std::size_t CountBegunDocuments() const {
    return static_cast<std::size_t>(
        std::ranges::count(agent_.LogMessages(), "[+] MrvServiceRecordsSvr::handleDiscoveryDocument"));
  }
};

TEST_F(Reads, AreAnsweredDuringAReplaceQuestion) {
  agent_.Start();
  AskToReplace();
  ExpectAnswersAbout("s1", "Old");
  EXPECT_EQ(agent_.Terminate(), 0);
}

TEST_F(Reads, AreAnsweredWhileAnothersChangeWaitsForAReplaceQuestion) {
  agent_.Start();
  AskToReplace();
  const std::uint64_t change =
      agent_.Bus().StartServiceRecords("setDefaultGatewayForStoreIDTo", {"s1", "Branch"});
  ExpectAnswersAbout("s1", "Old");
  EXPECT_FALSE(agent_.Bus().HasReply(change));
  agent_.Release("declined");
  EXPECT_EQ(agent_.Bus().WaitForReply(change), true);
  EXPECT_EQ(agent_.Bus().Beacons("getCurrentGatewayForStore", {Store("s1", "").url})["GatewayName"],
            "Branch");
}

// A forced end joins no thread, of which ThreadSanitizer makes an exit status of its own.
#ifndef __SANITIZE_THREAD__
TEST_F(Reads, AreAnsweredWhileAPlugInHangs) {
  StartWithHanging("replaceStore");
  Open(OpenableFile("old.cr", {Store("s1", "Old")}));
  agent_.Bus().OpenFiles({agent_.URI(OpenableFile("new.cr", {Store("s1", "New")}))});
  ASSERT_TRUE(WaitForHanging(1));
  agent_.Bus().StartServiceRecords("deleteStore", {"s1"});
  ExpectAnswersAbout("s1", "Old");
  EXPECT_EQ(agent_.Terminate(), 0);
}

// Expands its parameter entities until the time of a parse is over.
std::string EndlessDocument() {
  std::string declarations = "<!ENTITY % p0 ' '>";
  for (int i = 1; i <= 60; ++i) {
    const std::string inner = "&#37;p" + std::to_string(i - 1) + ";";
    declarations += "<!ENTITY % p" + std::to_string(i) + " '" + inner + inner + "'>";
  }
  return "<?xml version=\"1.0\"?><!DOCTYPE Discovery [" + declarations + "%p60;]><Discovery><!--" +
         std::string(10 << 20, 'x') + "--></Discovery>";
}

TEST_F(Reads, AreAnsweredWhileAHostileDocumentOfTenMebibytesIsParsed) {
  agent_.EnableLog();
  agent_.Start();
  agent_.Bus().ServiceRecords("handleDiscoveryDocument",
                              {TestSupport::DiscoveryDocument({Store("s1", "One")})});
  const std::uint64_t hostile =
      agent_.Bus().StartServiceRecords("handleDiscoveryDocument", {EndlessDocument()});
  const std::uint64_t behind = agent_.Bus().StartServiceRecords("deleteStore", {"s1"});
  ASSERT_TRUE(agent_.Bus().WaitUntil([&] { return CountBegunDocuments() == 2; }));
  ExpectAnswersAbout("s1", "One");
  EXPECT_FALSE(agent_.Bus().HasReply(hostile));
  EXPECT_EQ(agent_.Terminate(), 0) << "before the parse has ended";
  EXPECT_EQ(agent_.Bus().WaitForReply(behind), false);
}
#endif

}  // namespace

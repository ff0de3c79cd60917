#include "support/AgentTest.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <utility>

namespace TestSupport {

namespace {

std::vector<std::string> WithTrust(std::vector<std::string> environment) {
  environment.push_back("SSL_CERT_FILE=" + TestAuthority::Shared().Root().string());
  return environment;
}

}  // namespace

AgentTest::AgentTest(std::vector<std::string> environment)
    : server_(TestAuthority::Shared().TlsServerBlock("good")), agent_(WithTrust(std::move(environment))) {}

StoreText AgentTest::Store(const std::string& id, const std::string& name) const {
  const std::string url = "https://localhost:" + std::to_string(server_.Port());
  return {.id = id,
          .name = name,
          .url = url + "/" + id + "/discovery",
          .gateways = {{.name = "Branch", .location = url + "/branch"},
                       {.name = "Head Office", .location = url + "/head", .isDefault = true}},
          .internalBeacons = {url + "/internal"},
          .externalBeacons = {url + "/external"}};
}

void AgentTest::Serve(const StoreText& store, const std::string& content) const {
  const std::string address = server_.Address("https") + "/";
  if (!store.url.starts_with(address)) return;
  const std::filesystem::path document = server_.Document(store.url.substr(address.size()));
  std::filesystem::create_directories(document.parent_path());
  std::ofstream(document) << content;
}

std::string AgentTest::OpenableFile(const std::string& name, const std::vector<StoreText>& stores) {
  for (const StoreText& store : stores) Serve(store, DiscoveryDocument({store}));
  return agent_.Write(name, ServiceRecordDocument(stores)).string();
}

void AgentTest::Open(const std::string& file) {
  agent_.Bus().ServiceRecords("handleServiceRecordFTA", {file});
}

void AgentTest::StartWithHanging(const std::string& dialog) {
  const auto module = agent_.BundleFolder() / "PlugIns/ServiceRecordUI.bundle/ServiceRecordUI.so";
  std::filesystem::remove(module);
  std::filesystem::copy_file(SR_STAGE_DIR "/../tests/ui/HangingUI.so", module);
  agent_.Start({"SR_TEST_HANGS=" + dialog});
}

std::size_t AgentTest::Hanging() const {
  std::error_code none;
  const auto size = std::filesystem::file_size(agent_.DialogsFolder() / "hanging", none);
  return none ? 0 : size;
}

bool AgentTest::WaitForHanging(std::size_t count) {
  return agent_.Bus().WaitUntil([&] { return Hanging() >= count; });
}

void AgentTest::AskToReplace() {
  Open(OpenableFile("old.cr", {Store("s1", "Old")}));
  const std::size_t before = agent_.Dialogs().size();
  agent_.HoldDialogs();
  agent_.Bus().OpenFiles({agent_.URI(OpenableFile("new.cr", {Store("s1", "New")}))});
  ASSERT_TRUE(agent_.Bus().WaitUntil([&] { return agent_.Dialogs().size() == before + 1; }));
  agent_.Release("accepted");
  ASSERT_TRUE(agent_.Bus().WaitUntil([&] { return agent_.Dialogs().size() == before + 2; }));
  ASSERT_EQ(agent_.Dialogs().back().first, "replaceStore");
}

void AgentTest::AwaitArrival(BusClient& sender) {
  sender.Call("com.morvane.ServiceRecords", "/com/morvane/ServiceRecords", "org.freedesktop.DBus.Peer",
              "Ping");
}

std::size_t AgentTest::CountNotifications() {
  const std::vector<std::string> seen = agent_.Bus().Notifications();
  return static_cast<std::size_t>(std::count(seen.begin(), seen.end(), kStoresUpdated));
}

std::vector<std::string> AgentTest::StoreIDs() {
  std::vector<std::string> ids;
  for (const auto& store : agent_.Bus().ServiceRecords("allStores")) ids.push_back(store["StoreID"]);
  return ids;
}

std::string AgentTest::StateOfSavedStores(BusClient& reader) {
  return reader.Call("com.morvane.ServiceRecords", "/com/morvane/ServiceRecords",
                     "org.freedesktop.DBus.Properties", "Get",
                     {"com.morvane.MrvServiceRecordsService", "stateOfSavedStores"});
}

}  // namespace TestSupport

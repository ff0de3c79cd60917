#include "agent/AgentTest.h"

#include <algorithm>
#include <filesystem>
#include <fstream>

using testsupport::StoreText;
using testsupport::TestAuthority;

AgentTest::AgentTest()
    : server_(TestAuthority::Shared().TlsServerBlock("good")),
      agent_({"SSL_CERT_FILE=" + TestAuthority::Shared().Root().string()}) {}

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
  for (const StoreText& store : stores) Serve(store, testsupport::DiscoveryDocument({store}));
  return agent_.Write(name, testsupport::ServiceRecordDocument(stores)).string();
}

void AgentTest::Open(const std::string& file) {
  agent_.Bus().ServiceRecords("handleServiceRecordFTA", {file});
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

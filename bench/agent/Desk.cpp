#include "agent/Desk.h"

#include "support/TestAuthority.h"

#include <filesystem>
#include <fstream>

namespace Bench {
namespace {

using TestSupport::StoreText;
using TestSupport::TestAuthority;

constexpr std::size_t kStores = 10;

std::vector<std::string> WithTrust(std::vector<std::string> environment) {
  environment.push_back("SSL_CERT_FILE=" + TestAuthority::Shared().Root().string());
  return environment;
}

}  // namespace

Desk::Desk(const std::vector<std::string>& environment)
    : server_(TestAuthority::Shared().TlsServerBlock("good")), agent_(kStores, WithTrust(environment)) {
  agent_.Start();
}

std::string Desk::FileWithStore(const std::string& id) {
  const std::string server = server_.Address("https");
  StoreText store = StoreAsText(0, ServedShape());
  store.id = id;
  store.url = server + "/" + id + "/discovery";
  for (auto& gateway : store.gateways) gateway.location = server + "/" + gateway.name.substr(8);
  const std::filesystem::path document = server_.Document(id + "/discovery");
  std::filesystem::create_directories(document.parent_path());
  std::ofstream(document) << TestSupport::DiscoveryDocument({store});
  return Agent().Write(id + ".cr", TestSupport::ServiceRecordDocument({store})).string();
}

}  // namespace Bench

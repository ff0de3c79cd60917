#include "MacSRHTTPRequest.h"
#include "MacSSLValidation.h"
#include "SRLib/Gen_URL.h"
#include "SRLib/Platform/SSLValidationDetails.h"
#include "libs/Text/TextHelpers.h"
#include "libs/Text/UTF8Thread.h"
#include "network/ReachedServers.h"
#include "support/GeneratedAddresses.h"

#include <arpa/inet.h>
#include <curl/curl.h>
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>

namespace {

using TestSupport::GeneratedAddresses;
using TestSupport::ReachedServers;

// Another tool's idea of the name that is looked up for a host as it stands in an address.
std::string LookedUpName(const std::string& host) {
  const util::UTF8Thread utf8;
  const std::unique_ptr<CURLU, decltype(&curl_url_cleanup)> url(curl_url(), curl_url_cleanup);
  int length = 0;
  const std::unique_ptr<char, decltype(&curl_free)> decoded(
      curl_easy_unescape(nullptr, host.data(), static_cast<int>(host.size()), &length), curl_free);
  char* name = nullptr;
  if (curl_url_set(url.get(), CURLUPART_HOST, decoded.get(), 0) != CURLUE_OK ||
      curl_url_get(url.get(), CURLUPART_HOST, &name, CURLU_PUNYCODE) != CURLUE_OK)
    return {};
  const std::unique_ptr<char, decltype(&curl_free)> owned(name, curl_free);
  return util::AsciiLowerCased(name);
}

bool IsSameNumber(const std::string& one, const std::string& other) {
  in6_addr left{};
  in6_addr right{};
  const int family = other.find(':') == std::string::npos ? AF_INET : AF_INET6;
  return ::inet_pton(family, one.c_str(), &left) == 1 && ::inet_pton(family, other.c_str(), &right) == 1 &&
         std::memcmp(&left, &right, sizeof left) == 0;
}

bool IsThisMachine(std::string name) {
  if (name.ends_with('.')) name.pop_back();
  return name == "localhost" || name.ends_with(".localhost");
}

// Whether the server is the one that the address names by the core's rules.
bool IsShownServer(const Gen_URL& url, const ReachedServers::Server& server) {
  const Address::SplitURL& shown = url.GetSplitURL();
  std::string name = LookedUpName(shown.server);
  if (name.starts_with('[') && name.ends_with(']')) name = name.substr(1, name.size() - 2);
  const bool isHost = util::AsciiLowerCased(server.host) == name || IsSameNumber(name, server.host) ||
                      (IsThisMachine(name) && (server.host == "127.0.0.1" || server.host == "::1"));
  return isHost && server.port == (shown.port.empty() ? shown.DefaultPort() : shown.port);
}

// One way of asking, for each of so many generated addresses.
template <typename Ask>
void ExpectOnlyShownServersAsked(int texts, Ask ask) {
  ReachedServers reached;
  GeneratedAddresses addresses;
  int asked = 0;
  for (int i = 0; i < texts; ++i) {
    const std::string text = addresses.Next();
    ask(util::widen(text));
    const std::vector<ReachedServers::Server> servers = reached.Take();
    asked += servers.empty() ? 0 : 1;
    for (const ReachedServers::Server& server : servers) {
      ASSERT_TRUE(IsShownServer(Gen_URL(text), server))
          << text << " is shown as " << Gen_URL(text).GetPagelessURL() << ", but " << server.host << " port "
          << server.port << " is asked";
    }
  }
  EXPECT_GT(asked, texts / 10);
}

TEST(OneReading, ARequestTurnsToTheServerThatIsShown) {
  ExpectOnlyShownServersAsked(100'000, [](const std::wstring& address) {
    ServiceRecords::MacSRHTTPRequest request(address);
    EXPECT_FALSE(request.SendHTTPRequest(L""));
  });
}

TEST(OneReading, AValidationTurnsToTheServerThatIsShown) {
  ExpectOnlyShownServersAsked(20'000, [](const std::wstring& address) {
    ServiceRecords::MacSSLValidation validation(address);
    ServiceRecords::SSLValidationDetails details;
    EXPECT_FALSE(validation.ValidateURL(details));
  });
}

}  // namespace

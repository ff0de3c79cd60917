#include "support/ScriptedCredentials.h"
#include "support/TrustedAuthority.h"
#include "support/WebServer.h"
#include "warden/WardenLibrary.h"
#include "warden/WardenRequest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

using TestSupport::ScriptedCredentials;
using TestSupport::TrustedAuthority;
using TestSupport::WardenLibrary;
using TestSupport::WardenRequest;
using TestSupport::WebServer;

std::wstring Wide(const std::string& text) {
  return {text.begin(), text.end()};
}

// A store and a gateway that rewrites, both behind TLS.
class GatewayTest : public testing::Test {
 protected:
  void SetUp() override {
    std::ofstream(store_.Document("discovery")) << "<found/>";
    std::ofstream(gateway_.Document("passwords")) << "user:{PLAIN}secret\n";
  }

  std::uint32_t RunThroughGateway(const std::string& path, std::uint32_t mode = 2) {
    WardenRequest request(library_, Wide(store_.Address("https") + path));
    EXPECT_EQ(request.ForceRoute({Wide(gateway_.Address("https")) + L"/", 1, mode}), MORVANE_WARDEN_OK);
    const std::uint32_t action = request.Run();
    body_ = request.Body();
    sent_ = request.Sent();
    lastHeaders_ = request.LastHeaders();
    return action;
  }

  WebServer store_{TrustedAuthority().TlsServerBlock("good", R"(
    location = /moved { return 302 /discovery; }
    location = /forbidden { return 403; }
    location = /broken { return 500; })")};
  WebServer gateway_{TrustedAuthority().TlsServerBlock("gateway", R"(
    auth_basic "Gate 1, south";
    auth_basic_user_file @DOCUMENTS@/passwords;
    location /https/localhost:)" + std::to_string(store_.Port()) + R"(/ {
      proxy_set_header Authorization "";
      proxy_pass https://localhost:)" + std::to_string(store_.Port()) +
                                                                      R"(/;
      proxy_redirect default;
    })")};
  WardenLibrary library_{ScriptedCredentials::kScript};
  ScriptedCredentials program_{library_.Folder()};
  std::wstring body_;
  int sent_ = 0;
  std::vector<std::wstring> lastHeaders_;
};

TEST_F(GatewayTest, TheStoreIsReachedThroughTheGatewayAfterLogOn) {
  program_.WillGive("user", "secret");
  EXPECT_EQ(RunThroughGateway("/discovery"), 1U);
  EXPECT_EQ(body_, L"<found/>");
  EXPECT_EQ(sent_, 2);
  EXPECT_THAT(program_.Requests(), ElementsAre(HasSubstr("host=localhost:" + std::to_string(gateway_.Port()) +
                                                         "\nrealm=Gate 1, south\nplace=gateway\n")));
}

TEST_F(GatewayTest, ARedirectOfTheStoreIsFollowedThroughTheGateway) {
  program_.WillGive("user", "secret");
  EXPECT_EQ(RunThroughGateway("/moved"), 1U);
  EXPECT_EQ(body_, L"<found/>");
}

TEST_F(GatewayTest, ErrorsOfTheStoreEndTheRequest) {
  for (const char* path : {"/forbidden", "/missing", "/broken"}) {
    program_.WillGive("user", "secret");
    EXPECT_EQ(RunThroughGateway(path), static_cast<std::uint32_t>(MORVANE_WARDEN_ACTION_REFUSED)) << path;
    EXPECT_EQ(sent_, 2) << path;
  }
}

TEST_F(GatewayTest, WrongPasswordsAreRejectedThreeTimes) {
  for (const char* password : {"one", "two", "three"}) program_.WillGive("user", password);
  EXPECT_EQ(RunThroughGateway("/discovery"),
            static_cast<std::uint32_t>(MORVANE_WARDEN_ACTION_TOO_MANY_TRIES));
  EXPECT_EQ(sent_, 4);
}

TEST_F(GatewayTest, AModeThatDoesNotRewriteGoesToTheStore) {
  EXPECT_EQ(RunThroughGateway("/discovery", 0), 1U);
  EXPECT_EQ(body_, L"<found/>");
  EXPECT_THAT(lastHeaders_, IsEmpty());
}

TEST_F(GatewayTest, CredentialsDoNotFollowARedirectToAnotherServerAndAreNotAcceptedThere) {
  const WebServer other(
      TrustedAuthority().TlsServerBlock("good", "location / { return 200 \"auth=$http_authorization\"; }"));
  const WebServer redirecting(TrustedAuthority().TlsServerBlock(
      "good",
      "location / { if ($http_authorization = \"\") { add_header WWW-Authenticate 'Basic realm=x' always; "
      "return 401; } return 302 " +
          other.Address("https") + "/; }"));
  program_.WillGive("user", "secret", "remember=yes\nsource=asked");
  WardenRequest request(library_, Wide(redirecting.Address("https")) + L"/");
  EXPECT_EQ(request.Run(), 1U);
  EXPECT_EQ(request.Body(), L"auth=");
  EXPECT_THAT(program_.Actions(), ElementsAre("get"));
}

TEST_F(GatewayTest, ARedirectToPlainHTTPIsNoAnswer) {
  const WebServer other(TestSupport::ServerBlock("", "location / { return 200; }"));
  const WebServer redirecting(TrustedAuthority().TlsServerBlock(
      "good",
      "location / { if ($http_authorization = \"\") { add_header WWW-Authenticate 'Basic realm=x' always; "
      "return 401; } return 302 " +
          other.Address("http") + "/; }"));
  program_.WillGive("user", "secret");
  WardenRequest request(library_, Wide(redirecting.Address("https")) + L"/");
  EXPECT_EQ(request.Run(), static_cast<std::uint32_t>(MORVANE_WARDEN_ACTION_NO_ANSWER));
  EXPECT_EQ(request.Sent(), 2);
}

TEST_F(GatewayTest, AChallengeBehindARedirectToAnotherServerIsNotTheAskedOnes) {
  const WebServer other(TrustedAuthority().TlsServerBlock(
      "good", "location / { add_header WWW-Authenticate 'Basic realm=x' always; return 401; }"));
  const WebServer redirecting(TrustedAuthority().TlsServerBlock(
      "good",
      "location / { if ($http_authorization = \"\") { add_header WWW-Authenticate 'Basic realm=x' always; "
      "return 401; } return 302 " +
          other.Address("https") + "/; }"));
  program_.WillGive("user", "secret", "source=stored");
  WardenRequest request(library_, Wide(redirecting.Address("https")) + L"/");
  EXPECT_EQ(request.Run(), static_cast<std::uint32_t>(MORVANE_WARDEN_ACTION_REFUSED));
  EXPECT_EQ(request.Sent(), 2);
  EXPECT_THAT(program_.Actions(), ElementsAre("get"));
  EXPECT_THAT(library_.Log(),
              Contains(HasSubstr("the challenge is another server's: " + redirecting.Address("https") +
                                 " was asked, " + other.Address("https") + " answers")));
}

TEST_F(GatewayTest, AServerWithoutAnAnswerEndsTheRequest) {
  WardenRequest request(library_, L"https://localhost:1/");
  EXPECT_EQ(request.Run(), static_cast<std::uint32_t>(MORVANE_WARDEN_ACTION_NO_ANSWER));
}

}  // namespace

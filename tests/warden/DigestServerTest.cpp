#include "libs/Warden_SDK/Crypto.h"
#include "support/ScriptedCredentials.h"
#include "warden/ApacheServer.h"
#include "warden/WardenLibrary.h"
#include "warden/WardenRequest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::SizeIs;
using TestSupport::ApacheServer;
using TestSupport::ScriptedCredentials;
using TestSupport::WardenLibrary;
using TestSupport::WardenRequest;

constexpr const char* kRealm = "Stores, all = and more";

// As the server's own tool writes its password file.
std::string PasswordLine(const std::string& user, const std::string& password) {
  const std::string text = user + ":" + kRealm + ":";
  const auto hash = Warden::HexHash(Warden::HashAlgorithm::MD5, {text, password});
  return text + (hash ? std::string(hash->View()) : std::string()) + "\n";
}

// Digest against a server that was not written here.
class DigestServerTest : public testing::Test {
 protected:
  static ApacheServer Server(const std::string& more = {}) {
    return ApacheServer(
        {"alias", "auth_digest"},
        "AuthType Digest\nAuthName \"Stores, all = and more\"\n"
        "AuthDigestProvider file\nAuthUserFile @FOLDER@/passwords\nRequire valid-user\n" +
            more,
        {{"passwords", PasswordLine("user", "secret") + PasswordLine("J\xC3\xA4s", "p\xC3\xA4ss")}});
  }

  WardenLibrary library_{ScriptedCredentials::kScript};
  ScriptedCredentials program_{library_.Folder()};
};

TEST_F(DigestServerTest, AcceptsTheAnswer) {
  const ApacheServer server = Server();
  program_.WillGive("user", "secret");
  WardenRequest request(library_, server.Address() + L"/discovery?a=b&c=\"d\"");
  EXPECT_EQ(request.Run(), 1U) << server.Log();
  EXPECT_EQ(request.Body(), L"<found/>");
  EXPECT_THAT(request.LastHeaders(), ElementsAre(HasSubstr(L"nc=00000001")));
  EXPECT_THAT(program_.Requests(), ElementsAre(HasSubstr("realm=" + std::string(kRealm) + "\n")));
}

TEST_F(DigestServerTest, AcceptsAUserOutsideAscii) {
  const ApacheServer server = Server();
  program_.WillGive("J\xC3\xA4s", "p\xC3\xA4ss");
  WardenRequest request(library_, server.Address() + L"/discovery");
  EXPECT_EQ(request.Run(), 1U) << server.Log();
}

TEST_F(DigestServerTest, AcceptsAnAnswerForATargetThatIsRequestedToTheLetter) {
  const ApacheServer server = Server();
  program_.WillGive("user", "secret");
  WardenRequest request(library_, server.Address() + L"/x/../discovery?\u00FC \u4E1C");
  EXPECT_EQ(request.Run(), 1U) << server.Log();
  EXPECT_THAT(request.LastHeaders(), ElementsAre(HasSubstr(L"uri=\"/x/../discovery?%C3%BC%20%E4%B8%9C\"")));
}

TEST_F(DigestServerTest, AcceptsTheAnswerBehindARedirectOfItsOwn) {
  const ApacheServer server = Server(
      "Redirect 302 /open /discovery\nRedirect 302 /closed /discovery\n"
      "<Files open>\nRequire all granted\n</Files>\n");
  for (const wchar_t* path : {L"/open", L"/closed"}) {
    program_.WillGive("user", "secret", "source=stored");
    WardenRequest request(library_, server.Address() + path);
    EXPECT_EQ(request.Run(), 1U) << server.Log();
    EXPECT_EQ(request.Body(), L"<found/>");
    EXPECT_THAT(request.LastHeaders(), ElementsAre(HasSubstr(L"uri=\"/discovery\"")));
  }
  EXPECT_THAT(program_.Actions(), ElementsAre("get", "get"));
}

TEST_F(DigestServerTest, RejectsAWrongPasswordThreeTimes) {
  const ApacheServer server = Server();
  for (const char* password : {"one", "two", "three"}) program_.WillGive("user", password);
  WardenRequest request(library_, server.Address() + L"/discovery");
  EXPECT_EQ(request.Run(), static_cast<std::uint32_t>(MORVANE_WARDEN_ACTION_TOO_MANY_TRIES));
  EXPECT_THAT(program_.Requests(), SizeIs(3));
}

TEST_F(DigestServerTest, RenewsANonceThatWentStaleWhileTheUserWasAsked) {
  const ApacheServer server = Server("AuthDigestNonceLifetime 1\n");
  program_.WillGive("user", "secret");
  WardenRequest request(library_, server.Address() + L"/discovery");
  // A first pass by hand, with a nonce of long ago.
  EXPECT_EQ(request.Prepare(), MORVANE_WARDEN_ACTION_SEND);
  request.Report(401, {L"WWW-Authenticate: Digest realm=\"Stores, all = and more\", "
                       L"nonce=\"AAAAAAAAAAA=0000000000000000000000000000000000000000\", algorithm=MD5, "
                       L"qop=\"auth\""});
  EXPECT_EQ(request.Run(), 1U) << server.Log();
  EXPECT_EQ(request.Sent(), 2);
  EXPECT_THAT(program_.Requests(), SizeIs(1));
}

}  // namespace

#include "warden/ApacheServer.h"
#include "warden/KerberosRealm.h"
#include "warden/ScriptedCredentials.h"
#include "warden/WardenLibrary.h"
#include "warden/WardenRequest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;
using testsupport::ApacheServer;
using testsupport::KerberosRealm;
using testsupport::ScriptedCredentials;
using testsupport::WardenLibrary;
using testsupport::WardenRequest;

// Negotiate with real tickets against a server that was not written here.
class NegotiateTest : public testing::Test {
 protected:
  ApacheServer Server() {
    return ApacheServer({"auth_gssapi"},
                        "AuthType GSSAPI\nAuthName Stores\nGssapiCredStore keytab:" + realm_.Keytab() +
                            "\nGssapiAllowedMech krb5\nRequire valid-user\n",
                        {}, realm_.Environment());
  }

  KerberosRealm realm_;
  WardenLibrary library_{ScriptedCredentials::kScript};
  ScriptedCredentials program_{library_.Folder()};
};

TEST_F(NegotiateTest, ATicketIsAcceptedWithoutAskingTheUser) {
  const ApacheServer server = Server();
  realm_.LogOn();
  WardenRequest request(library_, server.Address() + L"/discovery");
  EXPECT_EQ(request.Run(), 1U) << server.Log();
  EXPECT_EQ(request.Body(), L"<found/>");
  EXPECT_EQ(request.Sent(), 2);
  EXPECT_THAT(request.LastHeaders(), ElementsAre(StartsWith(L"Authorization: Negotiate YII")));
  EXPECT_THAT(program_.Requests(), IsEmpty());
}

TEST_F(NegotiateTest, WithoutATicketThereAreNoCredentials) {
  const ApacheServer server = Server();
  WardenRequest request(library_, server.Address() + L"/discovery");
  EXPECT_EQ(request.Run(), static_cast<std::uint32_t>(MORVANE_WARDEN_ACTION_NO_CREDENTIALS));
  EXPECT_THAT(library_.Log(), Contains(HasSubstr("no ticket for Negotiate")));
}

TEST_F(NegotiateTest, WithoutATicketTheNextSchemeIsTaken) {
  program_.WillGive("user", "secret");
  WardenRequest request(library_, L"https://localhost/");
  EXPECT_EQ(request.Prepare(), MORVANE_WARDEN_ACTION_SEND);
  request.Report(401, {L"WWW-Authenticate: Negotiate", L"WWW-Authenticate: Basic realm=\"Stores\""});
  EXPECT_EQ(request.Prepare(), MORVANE_WARDEN_ACTION_SEND);
  EXPECT_THAT(request.Headers(), ElementsAre(StartsWith(L"Authorization: Basic ")));
}

TEST_F(NegotiateTest, ARefusedTicketGivesWayToTheNextScheme) {
  realm_.LogOn();
  program_.WillGive("user", "secret");
  WardenRequest request(library_, L"https://localhost/");
  const std::vector<std::wstring> challenges{L"WWW-Authenticate: Negotiate, Basic realm=\"Stores\""};
  for (const wchar_t* scheme : {L"Authorization: Negotiate ", L"Authorization: Basic "}) {
    EXPECT_EQ(request.Prepare(), MORVANE_WARDEN_ACTION_SEND);
    request.Report(401, challenges);
    EXPECT_EQ(request.Prepare(), MORVANE_WARDEN_ACTION_SEND);
    EXPECT_THAT(request.Headers(), ElementsAre(StartsWith(scheme)));
  }
  EXPECT_THAT(program_.Requests(), SizeIs(1));
}

}  // namespace

#include "libs/Warden_SDK/Crypto.h"
#include "libs/Warden_SDK/NegotiateExchange.h"
#include "support/ScriptedCredentials.h"
#include "warden/ApacheServer.h"
#include "warden/KerberosRealm.h"
#include "warden/WardenLibrary.h"
#include "warden/WardenRequest.h"

#include <gmock/gmock.h>
#include <gssapi/gssapi.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;
using TestSupport::ApacheServer;
using TestSupport::KerberosRealm;
using TestSupport::ScriptedCredentials;
using TestSupport::WardenLibrary;
using TestSupport::WardenRequest;

// What the service HTTP/localhost is asked for in a client's first token.
struct AskedOfTheService {
  OM_uint32 flags = 0;
  bool gotTicketOfTheUser = false;
  std::string answer;
};

// As a server takes the token, with the realm's key for the service.
AskedOfTheService TakenByTheService(std::string token, const std::string& keytab) {
  ::setenv("KRB5_KTNAME", keytab.c_str(), 1);
  ::setenv("KRB5RCACHETYPE", "none", 1);
  AskedOfTheService asked;
  OM_uint32 minor = 0;
  gss_ctx_id_t context = GSS_C_NO_CONTEXT;
  gss_cred_id_t delegated = GSS_C_NO_CREDENTIAL;
  gss_buffer_desc input{token.size(), token.data()};
  gss_buffer_desc output = GSS_C_EMPTY_BUFFER;
  const OM_uint32 major =
      gss_accept_sec_context(&minor, &context, GSS_C_NO_CREDENTIAL, &input, GSS_C_NO_CHANNEL_BINDINGS,
                             nullptr, nullptr, &output, &asked.flags, nullptr, &delegated);
  EXPECT_EQ(major, static_cast<OM_uint32>(GSS_S_COMPLETE));
  asked.gotTicketOfTheUser = delegated != GSS_C_NO_CREDENTIAL;
  asked.answer.assign(static_cast<const char*>(output.value), output.length);
  gss_release_buffer(&minor, &output);
  gss_release_cred(&minor, &delegated);
  gss_delete_sec_context(&minor, &context, GSS_C_NO_BUFFER);
  ::unsetenv("KRB5_KTNAME");
  ::unsetenv("KRB5RCACHETYPE");
  return asked;
}

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

TEST_F(NegotiateTest, AsksTheServerToAuthenticateItselfAndHandsNoTicketOn) {
  realm_.LogOn();
  Warden::NegotiateExchange exchange("localhost");
  const std::optional<CredentialWire::Secret> token = exchange.Next("");
  ASSERT_TRUE(token);
  const std::optional<std::string> bytes = Warden::FromBase64(token->View());
  ASSERT_TRUE(bytes);
  const AskedOfTheService asked = TakenByTheService(*bytes, realm_.Keytab());
  EXPECT_TRUE((asked.flags & GSS_C_MUTUAL_FLAG) != 0);
  EXPECT_FALSE((asked.flags & GSS_C_DELEG_FLAG) != 0);
  EXPECT_FALSE(asked.gotTicketOfTheUser);
  EXPECT_NE(asked.answer, "");
  EXPECT_FALSE(exchange.Next(Warden::Base64(asked.answer).View())) << "there is nothing left to send";
}

TEST_F(NegotiateTest, ATicketIsNotUsedWithoutTls) {
  realm_.LogOn();
  WardenRequest request(library_, L"http://localhost/");
  EXPECT_EQ(request.Prepare(), MORVANE_WARDEN_ACTION_SEND);
  request.Report(401, {L"WWW-Authenticate: Negotiate"});
  EXPECT_EQ(request.Prepare(), static_cast<std::uint32_t>(MORVANE_WARDEN_ACTION_UNSUPPORTED_SCHEME));
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

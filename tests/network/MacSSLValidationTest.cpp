#include "MacSSLValidation.h"
#include "ResourceKeeper.h"
#include "SRLib/Platform/Messages.h"
#include "SRLib/Platform/SSLValidationDetails.h"
#include "libs/Text/TextHelpers.h"
#include "libs/Transfer/StreamErrorCode.h"
#include "network/LevelCapture.h"
#include "support/EnvironmentVariable.h"
#include "support/RawServer.h"
#include "support/TraceCapture.h"
#include "support/TrustedAuthority.h"
#include "support/WebServer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace {

using ServiceRecords::MacSSLValidation;
using ServiceRecords::MacSSLValidationFactory;
using ServiceRecords::SSLValidationDetails;
using ServiceRecords::SSLValidationFactory;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;
using TestSupport::ChildProcess;
using TestSupport::EnvironmentVariable;
using TestSupport::kEmptyAnswer;
using TestSupport::LevelCapture;
using TestSupport::RawServer;
using TestSupport::ServerBlock;
using TestSupport::TraceCapture;
using TestSupport::TrustedAuthority;
using TestSupport::WebServer;

std::string StapledAnswer(const std::string& certificate) {
  return "ssl_stapling on; ssl_stapling_file " + TrustedAuthority().File(certificate + ".ocsp").string() +
         ";";
}

// One validation of one address, and what it left.
std::wstring Message(int id, const std::string& argument) {
  return util::WithArgument(util::MessageFromResourceW(id), argument);
}

struct Outcome {
  explicit Outcome(const std::string& address) : url(address), validation(util::widen(address)) {
    trusted = validation.ValidateURL(details);
    log = trace.Text();
  }

  void ExpectServerNotContacted() const {
    EXPECT_FALSE(trusted);
    EXPECT_EQ(details.Result, 1U);
    EXPECT_THAT(details.Errors, ElementsAre(Message(1632, Gen_URL(url).GetDisplayURL())));
    EXPECT_THAT(log, HasSubstr("Failed to contact URL  " + Gen_URL(url).GetPagelessURL() + "\n"));
    ExpectNothingTrusted();
  }

  void ExpectCertificatesNotFetched(const std::string& alsoLogged = "Read Stream failed with ") const {
    EXPECT_FALSE(trusted);
    EXPECT_EQ(details.Result, 2U);
    EXPECT_THAT(details.Errors, ElementsAre(Message(1696, Gen_URL(url).GetServer())));
    EXPECT_THAT(log,
                HasSubstr("Could not fetch certificates for URL " + Gen_URL(url).GetPagelessURL() + "\n"));
    EXPECT_THAT(log, HasSubstr(alsoLogged));
    ExpectNothingTrusted();
  }

  void ExpectNothingTrusted() const {
    EXPECT_THAT(validation.Certificates(), IsEmpty());
    EXPECT_EQ(details.Organization, L"");
    EXPECT_EQ(details.Issuer, L"");
  }

  std::string url;
  TraceCapture trace;
  MacSSLValidation validation;
  SSLValidationDetails details;
  bool trusted = false;
  std::string log;
};

void ExpectTrusted(const Outcome& outcome, const std::wstring& organization, const std::wstring& issuer) {
  EXPECT_TRUE(outcome.trusted);
  EXPECT_EQ(outcome.details.Organization, organization);
  EXPECT_EQ(outcome.details.Issuer, issuer);
  EXPECT_EQ(outcome.details.Result, 0U);
  EXPECT_THAT(outcome.details.Errors, IsEmpty());
  EXPECT_EQ(outcome.validation.ErrorCode(), 0);
}

TEST(MacSSLValidation, NamesTheOrganisationAndTheIssuerOfATrustedServer) {
  const WebServer server(TrustedAuthority().TlsServerBlock("good"));
  const Outcome outcome(server.Address("https") + "/Stores/Main/discovery");
  ExpectTrusted(outcome, L"Example Stores", L"Morvane Test Authority");
  EXPECT_THAT(outcome.log, Not(HasSubstr("Warning")));
}

TEST(MacSSLValidation, TakesTheVerifiedChainUpToTheRoot) {
  const WebServer server(TrustedAuthority().TlsServerBlock("chained"));
  const Outcome outcome(server.Address("https"));
  ExpectTrusted(outcome, L"Example Stores", L"Morvane Test Authority");
  const auto& chain = outcome.validation.Certificates();
  ASSERT_EQ(chain.size(), 3U);
  EXPECT_EQ(chain[0].issuerName(), "Morvane Test Intermediate");
  EXPECT_EQ(chain[1].organizationName(), "Morvane Test Intermediate");
  EXPECT_EQ(chain[2].commonName(), "Morvane Test Root");
}

TEST(MacSSLValidation, NamesTheServerWhoseCertificateHasNoOrganisation) {
  const WebServer server(TrustedAuthority().TlsServerBlock("plain"));
  ExpectTrusted(Outcome(server.Address("https")), L"localhost", L"Morvane Test Authority");
}

TEST(MacSSLValidation, ValidatesOverTLS12AsWell) {
  const WebServer server(TrustedAuthority().TlsServerBlock("good", "ssl_protocols TLSv1.2;"));
  ExpectTrusted(Outcome(server.Address("https")), L"Example Stores", L"Morvane Test Authority");
}

TEST(MacSSLValidation, DoesNotMindAnErrorStatus) {
  const WebServer server(TrustedAuthority().TlsServerBlock("good", "location / { return 503; }"));
  ExpectTrusted(Outcome(server.Address("https")), L"Example Stores", L"Morvane Test Authority");
}

TEST(MacSSLValidation, ValidatesTheServerThatWasAskedForNotWhereItRedirectsTo) {
  const WebServer other(TrustedAuthority().TlsServerBlock("unknown-issuer"));
  const WebServer server(TrustedAuthority().TlsServerBlock(
      "gateway", "location / { return 302 " + other.Address("https") + "/; }"));
  ExpectTrusted(Outcome(server.Address("https")), L"Example Gateways", L"Morvane Test Authority");
}

TEST(MacSSLValidation, TrustsAServerWhoseNameIsNotASCII) {
  const WebServer server(TrustedAuthority().TlsServerBlock("international"));
  const Outcome outcome("https://m\xC3\xBCnchen.localhost:" + std::to_string(server.Port()));
  ExpectTrusted(outcome, L"Example Stores", L"Morvane Test Authority");
}

TEST(MacSSLValidation, RejectsAnExpiredCertificate) {
  const WebServer server(TrustedAuthority().TlsServerBlock("expired"));
  const Outcome outcome(server.Address("https") + "/discovery");
  outcome.ExpectCertificatesNotFetched();
  EXPECT_THAT(outcome.log, HasSubstr("certificate has expired"));
  EXPECT_EQ(outcome.details.Reason, Message(util::kReasonExpired, "2021-01-01 00:00 UTC"));
  EXPECT_THAT(util::narrow(outcome.details.TechnicalDetails),
              testing::AllOf(StartsWith(server.Address("https") + ": "), HasSubstr("has expired"),
                             HasSubstr("(-9807)")));
}

TEST(MacSSLValidation, SaysOfAnotherCertificateOfTheChainThatItIsOne) {
  for (const auto& [certificate, reason, date] :
       {std::tuple("expired-issuer", util::kReasonIssuerExpired, "2021-01-01 00:00 UTC"),
        {"future-issuer", util::kReasonIssuerNotYetValid, "2049-01-01 00:00 UTC"}}) {
    const WebServer server(TrustedAuthority().TlsServerBlock(certificate));
    const Outcome outcome(server.Address("https"));
    outcome.ExpectCertificatesNotFetched();
    EXPECT_EQ(outcome.details.Reason, Message(reason, date));
  }
}

TEST(MacSSLValidation, SaysOfACertificateThatIsNotValidYetFromWhenOnItIs) {
  const WebServer server(TrustedAuthority().TlsServerBlock("not-yet-valid"));
  const Outcome outcome(server.Address("https"));
  outcome.ExpectCertificatesNotFetched();
  EXPECT_EQ(outcome.details.Reason, Message(util::kReasonNotYetValid, "2049-01-01 00:00 UTC"));
}

TEST(MacSSLValidation, RejectsAnUnknownIssuer) {
  const WebServer server(TrustedAuthority().TlsServerBlock("unknown-issuer"));
  const Outcome outcome(server.Address("https") + "/discovery");
  outcome.ExpectCertificatesNotFetched();
  EXPECT_EQ(outcome.details.Reason, Message(util::kReasonUnknownIssuer, "Example Stores"));
}

TEST(MacSSLValidation, WritesHiddenCharactersOfAnIssuerOutSoThatItsLineIsOne) {
  const WebServer server(TrustedAuthority().TlsServerBlock("two-line-issuer"));
  const Outcome outcome(server.Address("https"));
  EXPECT_EQ(outcome.details.Reason, Message(util::kReasonUnknownIssuer, "Example Stores<U+000A>of nobody"));
}

TEST(MacSSLValidation, RejectsACertificateForAnotherHost) {
  const WebServer server(TrustedAuthority().TlsServerBlock("wrong-host"));
  const Outcome outcome(server.Address("https") + "/discovery");
  outcome.ExpectCertificatesNotFetched();
  EXPECT_EQ(outcome.details.Reason, Message(util::kReasonOtherHost, "stores.example"));
}

TEST(MacSSLValidation, NamesTheAddressesOfACertificateForAnotherHost) {
  const WebServer server(TrustedAuthority().TlsServerBlock("address-alone"));
  const Outcome outcome(server.Address("https"));
  outcome.ExpectCertificatesNotFetched();
  EXPECT_EQ(outcome.details.Reason, Message(util::kReasonOtherHost, "192.0.2.1, 2001:db8::1"));
}

TEST(MacSSLValidation, SaysOfACertificateThatNamesNoHostOrNoIssuerThatItDoesNot) {
  for (const auto& [certificate, reason] :
       {std::pair("no-host", util::kReasonNoHost), {"nameless-issuer", util::kReasonNamelessIssuer}}) {
    const WebServer server(TrustedAuthority().TlsServerBlock(certificate));
    const Outcome outcome(server.Address("https"));
    outcome.ExpectCertificatesNotFetched();
    EXPECT_EQ(outcome.details.Reason, Message(reason, ""));
  }
}

TEST(MacSSLValidation, RejectsEveryServerWithoutATrustStore) {
  const WebServer server(TrustedAuthority().TlsServerBlock("good"));
  const EnvironmentVariable file("SSL_CERT_FILE", "/nonexistent/ca.pem");
  Outcome(server.Address("https")).ExpectCertificatesNotFetched();
}

TEST(MacSSLValidation, RejectsAnOldProtocol) {
  const WebServer server(
      TrustedAuthority().TlsServerBlock("good", "ssl_protocols TLSv1.1; ssl_ciphers ALL:@SECLEVEL=0;"));
  const Outcome outcome(server.Address("https"));
  outcome.ExpectCertificatesNotFetched();
  EXPECT_EQ(outcome.validation.ErrorCode(), Transfer::StreamErrorCode::kProtocolMismatch);
  EXPECT_EQ(outcome.details.Reason, Message(util::kReasonNoCommonProtocol, ""));
}

TEST(MacSSLValidation, SaysWhenNoCipherIsKnownToBothSides) {
  const WebServer server(TrustedAuthority().TlsServerBlock(
      "good", "ssl_protocols TLSv1.2; ssl_ciphers NULL-SHA256:@SECLEVEL=0;"));
  const Outcome outcome(server.Address("https"));
  outcome.ExpectCertificatesNotFetched();
  EXPECT_EQ(outcome.details.Reason, Message(util::kReasonNoCommonProtocol, ""));
}

TEST(MacSSLValidation, CountsTLSToAPlainPortAsATlsFailure) {
  const WebServer server(ServerBlock("", ""));
  const Outcome outcome(server.Address("https"));
  outcome.ExpectCertificatesNotFetched();
  EXPECT_EQ(outcome.details.Reason, L"");
}

TEST(MacSSLValidation, CountsADemandForAClientCertificateAsATlsFailure) {
  const auto& authority = TrustedAuthority();
  ChildProcess server({"openssl", "s_server", "-accept", "127.0.0.1:0", "-cert", authority.File("good.pem"),
                       "-key", authority.File("good.key"), "-CAfile", authority.Root(), "-Verify", "1",
                       "-verify_return_error", "-www"},
                      {}, {.captureErrors = true});
  const std::string start = "ACCEPT 127.0.0.1:";
  const std::string output = server.WaitForOutput(start);
  const std::string port = std::to_string(std::stoi(output.substr(output.find(start) + start.size())));
  const Outcome outcome("https://localhost:" + port);
  outcome.ExpectCertificatesNotFetched();
  EXPECT_EQ(outcome.details.Reason, L"");
}

TEST(MacSSLValidation, DoesNotTrustAServerThatAStapledAnswerCallsRevoked) {
  for (const char* protocol : {"TLSv1.2", "TLSv1.3"}) {
    const WebServer server(TrustedAuthority().TlsServerBlock(
        "revoked", StapledAnswer("revoked") + " ssl_protocols " + protocol + ";"));
    const Outcome outcome(server.Address("https") + "/discovery");
    outcome.ExpectServerNotContacted();
    EXPECT_EQ(outcome.validation.ErrorCode(), 0);
    EXPECT_THAT(outcome.log, Not(HasSubstr("Read Stream failed")));
    EXPECT_EQ(outcome.details.Reason, Message(util::kReasonRevoked, ""));
  }
}

TEST(MacSSLValidation, TrustsAServerThatAStapledAnswerCallsGood) {
  const WebServer server(TrustedAuthority().TlsServerBlock("good", StapledAnswer("good")));
  ExpectTrusted(Outcome(server.Address("https")), L"Example Stores", L"Morvane Test Authority");
}

TEST(MacSSLValidation, DoesNotTakeAnAnswerAboutAnotherCertificate) {
  const WebServer server(TrustedAuthority().TlsServerBlock("good", StapledAnswer("revoked")));
  ExpectTrusted(Outcome(server.Address("https")), L"Example Stores", L"Morvane Test Authority");
}

TEST(MacSSLValidation, CannotContactAServerThatRefusesConnections) {
  const std::uint16_t port = TestSupport::LoopbackListener().port;
  const Outcome outcome("https://localhost:" + std::to_string(port) + "/discovery");
  outcome.ExpectServerNotContacted();
  EXPECT_THAT(outcome.log, HasSubstr("Read Stream failed with "));
  EXPECT_EQ(outcome.validation.ErrorCode(), CURLE_COULDNT_CONNECT);
}

TEST(MacSSLValidation, ReportsEveryCodeOfTheTlsRangeAsCertificatesNotFetched) {
  for (const std::int64_t errorCode : {-9849, -9800}) {
    const MacSSLValidation validation(L"https://stores.example/discovery");
    SSLValidationDetails details;
    validation.ReportFailure(errorCode, details);
    EXPECT_EQ(details.Result, 2U) << errorCode;
    EXPECT_THAT(details.Errors, ElementsAre(Message(1696, "stores.example")));
  }
}

TEST(MacSSLValidation, ReportsTheCodesBesideTheTlsRangeAsServerNotContacted) {
  for (const std::int64_t errorCode : {-9850, -9799}) {
    const MacSSLValidation validation(L"https://stores.example/discovery");
    SSLValidationDetails details;
    validation.ReportFailure(errorCode, details);
    EXPECT_EQ(details.Result, 1U) << errorCode;
    EXPECT_THAT(details.Errors, ElementsAre(Message(1632, "https://stores.example/discovery")));
  }
}

TEST(MacSSLValidation, LogsFailuresAtLevelTwo) {
  const std::uint16_t port = TestSupport::LoopbackListener().port;
  const WebServer expired(TrustedAuthority().TlsServerBlock("expired"));
  for (const std::string& address : {"https://localhost:" + std::to_string(port), expired.Address("https")}) {
    const LevelCapture trace;
    MacSSLValidation validation(util::widen(address));
    SSLValidationDetails details;
    EXPECT_FALSE(validation.ValidateURL(details));
    EXPECT_THAT(trace.Levels(), ElementsAre(2)) << address;
  }
}

TEST(MacSSLValidation, CannotContactAnAddressThatIsNoURL) {
  const Outcome outcome("https://two words/discovery");
  outcome.ExpectServerNotContacted();
  EXPECT_EQ(outcome.validation.ErrorCode(), 0);
  EXPECT_THAT(outcome.log, Not(HasSubstr("Read Stream failed")));
}

TEST(MacSSLValidation, ContactsNobodyForAnAddressThatIsReadAsAnotherServers) {
  const RawServer server({kEmptyAnswer});
  const std::string port = std::to_string(server.Port());
  for (const std::string& address :
       {"http://bank.example%2Fstores@127.0.0.1:" + port + "/", "http://me@127.0.0.1:" + port,
        "http://0x7f.1:" + port + "/", "http://127.0.0.1:" + port + "?bank.example/"}) {
    const Outcome outcome(address);
    outcome.ExpectCertificatesNotFetched("");
    EXPECT_EQ(outcome.validation.ErrorCode(), Transfer::StreamErrorCode::kAnotherServer);
    EXPECT_THAT(outcome.log, Not(HasSubstr("Read Stream failed")));
  }
  EXPECT_THAT(server.Requests(), IsEmpty());
}

TEST(MacSSLValidation, FindsNoCertificatesOverPlainHTTP) {
  const RawServer server({"HTTP/1.1 200 OK\r\nContent-Length: 11\r\n\r\n"});
  const std::string url = util::narrow(server.Address()) + "/Stores/discovery";
  const Outcome outcome(url);
  outcome.ExpectServerNotContacted();
  EXPECT_EQ(outcome.validation.ErrorCode(), 0);
  EXPECT_THAT(outcome.log,
              HasSubstr("Warning: HTTP connection requested for SSL validation with " + url + " server."));
  EXPECT_EQ(outcome.details.Reason, Message(util::kReasonNoTls, ""));
  EXPECT_THAT(server.Requests(), ElementsAre(StartsWith("HEAD / HTTP/1.1\r\n")));
}

TEST(MacSSLValidation, DoesNotTakeTheCertificateOfAProxyForTheServers) {
  const WebServer proxy(TrustedAuthority().TlsServerBlock("good"));
  const EnvironmentVariable variable("http_proxy", proxy.Address("https"));
  const Outcome outcome("http://stores.example/discovery");
  outcome.ExpectServerNotContacted();
  EXPECT_EQ(outcome.validation.ErrorCode(), 0);
}

TEST(MacSSLValidation, StartsOverWithEachValidation) {
  auto server = std::make_unique<WebServer>(TrustedAuthority().TlsServerBlock("good"));
  MacSSLValidation validation(util::widen(server->Address("https")));
  SSLValidationDetails details;
  EXPECT_TRUE(validation.ValidateURL(details));
  server.reset();
  EXPECT_FALSE(validation.ValidateURL(details));
  EXPECT_EQ(details.Result, 1U);
  EXPECT_EQ(details.Reason, L"");
  EXPECT_THAT(validation.Certificates(), IsEmpty());
}

TEST(MacSSLValidationFactory, RegistersItselfAndMakesValidations) {
  MacSSLValidationFactory::Init();
  ASSERT_NE(SSLValidationFactory::c_Instance, nullptr);
  const auto validation = SSLValidationFactory::c_Instance->Create(L"https://stores.example");
  EXPECT_NE(dynamic_cast<MacSSLValidation*>(validation.get()), nullptr);
}

}  // namespace

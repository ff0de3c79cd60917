#include "doctor/ServerCheck.h"

#include "libs/Address/SendingForm.h"
#include "libs/Text/TextHelpers.h"
#include "libs/Transfer/CertificateNames.h"
#include "libs/Transfer/HeadRequest.h"
#include "libs/Transfer/StreamErrorCode.h"

#include <memory>

namespace Srctl::ServerCheck {
namespace {

using Wording::Message;
using Wording::Worded;
using Kind = Answer::Kind;

Message CheckAddress() {
  return Worded(
      "Check your network connection; if other addresses work, ask your administrator whether this one is "
      "right.");
}

Message CorrectRecord() {
  return Worded("Ask your administrator for a corrected service record and open that one (srctl open FILE).");
}

Message CheckClock() {
  return Worded(
      "See that the clock of this machine is right (date), then ask the administrator of the server.");
}

Message RenewCertificate() {
  return Worded(
      "See that the clock of this machine is right (date), then ask the administrator of the server to renew "
      "the certificate.");
}

Message CheckServer() {
  return Worded("Ask the administrator of the server to look at its TLS settings.");
}

Answer NotTrusted(const Message& why, const Message& next) {
  return {Kind::NotTrusted, Worded("this machine does not trust it: {why}", {{"why", why}}), next};
}

// `detail`: the transfer's own words.
Answer Unsecured(const std::string& detail) {
  return NotTrusted(detail.empty()
                        ? Worded("no secure connection to it could be made")
                        : Worded("no secure connection to it could be made ({detail})", {{"detail", detail}}),
                    CheckServer());
}

Answer ForProblem(const Transfer::PeerProblem& problem, const std::string& detail) {
  using Problem = Transfer::PeerProblem::Kind;
  switch (problem.kind) {
    case Problem::Expired:
      return NotTrusted(Worded("its certificate expired on {date}", {{"date", problem.subject}}),
                        RenewCertificate());
    case Problem::IssuerExpired:
      return NotTrusted(Worded("a certificate of its chain expired on {date}", {{"date", problem.subject}}),
                        RenewCertificate());
    case Problem::NotYetValid:
      return NotTrusted(Worded("its certificate is not valid before {date}", {{"date", problem.subject}}),
                        CheckClock());
    case Problem::IssuerNotYetValid:
      return NotTrusted(
          Worded("a certificate of its chain is not valid before {date}", {{"date", problem.subject}}),
          CheckClock());
    case Problem::OtherHost:
      return NotTrusted(
          problem.subject.empty()
              ? Worded("its certificate names no host")
              : Worded("its certificate is another server's: {hosts}", {{"hosts", problem.subject}}),
          Worded("When you are behind a hotspot's sign-in page, open a web browser and sign in; otherwise "
                 "ask your administrator whether the address is right."));
    case Problem::UnknownIssuer:
      return NotTrusted(
          problem.subject.empty()
              ? Worded("its certificate was issued by somebody whom this machine does not know")
              : Worded("its certificate was issued by {issuer}, whom this machine does not know",
                       {{"issuer", problem.subject}}),
          Worded("Ask your administrator for the authority's root certificate and install it "
                 "(update-ca-certificates), or ask whether the server sends its whole chain."));
    case Problem::Revoked:
      return NotTrusted(Worded("its certificate has been revoked"),
                        Worded("Ask the administrator of the server for a new certificate."));
    case Problem::NoCommonProtocol:
      return NotTrusted(Worded("it and this machine have no secure protocol in common"), CheckServer());
    case Problem::None:
      break;
  }
  return Unsecured(detail);
}

// The status with which the proxy refused to lead to the server; 0 where none did.
long StatusOfProxy(CURLcode result, const Transfer::HeadRequest& request) {
  long status = 0;
  if (result == CURLE_RECV_ERROR)
    curl_easy_getinfo(request.Transfer().Handle(), CURLINFO_HTTP_CONNECTCODE, &status);
  return status;
}

Answer NotContacted(const Message& why, const Message& next) {
  return {Kind::NotContacted, Worded("it cannot be contacted: {why}", {{"why", why}}), next};
}

Answer NotContacted(CURLcode result, long statusOfProxy) {
  if (statusOfProxy >= 300) {
    return NotContacted(
        Worded("the proxy does not lead to it (status {status})",
               {{"status", std::to_string(statusOfProxy)}}),
        Worded("Ask your administrator about the proxy (the variables https_proxy and all_proxy). One that "
               "wants a log-on (status 407) gets none but what the variable names."));
  }
  switch (result) {
    case CURLE_COULDNT_RESOLVE_HOST:
      return NotContacted(Worded("its name is not known here"), CheckAddress());
    case CURLE_COULDNT_RESOLVE_PROXY:
      return NotContacted(
          Worded("the name of the proxy is not known here"),
          Worded("Check the proxy in your network settings (the variables https_proxy and all_proxy)."));
    case CURLE_OPERATION_TIMEDOUT:
    case CURLE_ABORTED_BY_CALLBACK:  // by the watch over the transfer's time
      return NotContacted(Worded("it does not answer in time"), CheckAddress());
    case CURLE_COULDNT_CONNECT:
      return NotContacted(Worded("nobody takes the connection"), CheckAddress());
    default:
      return NotContacted(curl_easy_strerror(result), CheckAddress());
  }
}

// The scheme as it is written, where it is neither http nor https; else empty. The agent would take it for
// one of the two.
std::string ForeignScheme(const std::string& url) {
  const std::size_t end = url.find("://");
  if (end == std::string::npos) return {};
  const std::string scheme = util::AsciiLowerCased(url.substr(0, end));
  return scheme == "http" || scheme == "https" ? "" : url.substr(0, end + 3);
}

Answer AskOverTls(const std::string& url) {
  const std::unique_ptr<Transfer::HeadRequest> request = Transfer::HeadRequest::Make(url);
  if (!request) return NotContacted(CURLE_OUT_OF_MEMORY, 0);
  const CURLcode result = request->Perform();
  if (result != CURLE_OK) {
    const bool receivedFatalAlert = request->Transfer().Trust().ReceivedFatalAlert();
    return Transfer::StreamErrorCode::IsTlsFailure(
               Transfer::StreamErrorCode::FromTransfer(result, receivedFatalAlert))
               ? ForProblem(request->Problem(), request->Reason())
               : NotContacted(result, StatusOfProxy(result, *request));
  }
  const STACK_OF(X509)* const chain = request->TrustedChain();
  if (chain == nullptr) return ForProblem(request->Problem(), "");
  const X509* const root = sk_X509_value(chain, sk_X509_num(chain) - 1);
  const std::string issuer = Transfer::CertificateNames::Issuer(root).value_or("");
  return {Kind::Trusted,
          issuer.empty() ? Worded("it answers, and this machine trusts its certificate")
                         : Worded("it answers, and this machine trusts its certificate, issued by {issuer}",
                                  {{"issuer", issuer}})};
}

}  // namespace

Answer Ask(const std::string& url) {
  if (const std::string scheme = ForeignScheme(url); !scheme.empty()) {
    return {Kind::WrongAddress,
            Worded("it is not contacted: the address begins with {scheme}, which is neither https nor http",
                   {{"scheme", scheme}}),
            CorrectRecord()};
  }
  const Address::SplitURL split(url);
  const Address::SendingForm form = FormForSending(split, split.WithoutPage());
  if (form.reading != Address::Reading::Same) {
    const bool isURL = form.reading == Address::Reading::Other;
    return {Kind::WrongAddress,
            isURL ? Worded("it is not contacted: the address can be read as another server's or holds a user "
                           "name")
                  : Worded("it cannot be contacted: the address is no URL"),
            CorrectRecord()};
  }
  if (!split.IsSecure()) {
    return {Kind::NotProtected,
            Worded("what is sent to it can be read and changed on the way, because the address is http"),
            Worded("Ask your administrator for an https address.")};
  }
  return AskOverTls(form.text);
}

}  // namespace Srctl::ServerCheck

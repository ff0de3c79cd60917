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

Message CheckServer() {
  return Worded("Ask the administrator of the server to look at its TLS settings.");
}

Answer NotTrusted(const Message& why, const Message& next) {
  return {Kind::NotTrusted, Worded("this machine does not trust it: {why}", {{"why", why}}), next};
}

Answer ForVerification(long result, const std::string& reason) {
  switch (result) {
    case X509_V_ERR_CERT_HAS_EXPIRED:
      return NotTrusted(
          Worded("a certificate of its chain has expired"),
          Worded("See that the clock of this machine is right (date), then ask the administrator of the "
                 "server to renew the certificate."));
    case X509_V_ERR_CERT_NOT_YET_VALID:
      return NotTrusted(
          Worded("a certificate of its chain is not valid yet"),
          Worded("See that the clock of this machine is right (date), then ask the administrator of the "
                 "server."));
    case X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT:
    case X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT_LOCALLY:
    case X509_V_ERR_UNABLE_TO_VERIFY_LEAF_SIGNATURE:
    case X509_V_ERR_DEPTH_ZERO_SELF_SIGNED_CERT:
    case X509_V_ERR_SELF_SIGNED_CERT_IN_CHAIN:
      return NotTrusted(Worded("its certificate comes from an authority that this machine does not know"),
                        Worded("Ask your administrator for the authority's root certificate and install it "
                               "(update-ca-certificates), or ask whether the server sends its whole chain."));
    case X509_V_OK:
    case X509_V_ERR_UNSPECIFIED:
      return NotTrusted(
          Worded("its certificate is for another name"),
          Worded("When you are behind a hotspot's sign-in page, open a web browser and sign in; otherwise "
                 "ask your administrator whether the address is right."));
    default:
      return NotTrusted(reason, CheckServer());
  }
}

Answer NotHandshaken(CURLcode result, const Transfer::HeadRequest& request) {
  const std::string reason = request.Reason();
  if (result == CURLE_PEER_FAILED_VERIFICATION) {
    long verification = X509_V_OK;
    curl_easy_getinfo(request.Transfer().Handle(), CURLINFO_SSL_VERIFYRESULT, &verification);
    return ForVerification(verification, reason);
  }
  return NotTrusted(reason.empty() ? curl_easy_strerror(result) : reason, CheckServer());
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
               ? NotHandshaken(result, *request)
               : NotContacted(result, StatusOfProxy(result, *request));
  }
  const STACK_OF(X509)* const chain = request->TrustedChain();
  if (chain == nullptr) {
    return NotTrusted(Worded("its authority has revoked the certificate"),
                      Worded("Ask the administrator of the server for a new certificate."));
  }
  const X509* const root = sk_X509_value(chain, sk_X509_num(chain) - 1);
  return {Kind::Trusted, Worded("it answers, and this machine trusts its certificate, issued by {issuer}",
                                {{"issuer", Transfer::CertificateNames::Issuer(root).value_or("")}})};
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

#include "libs/Transfer/PeerTrust.h"

#include "libs/Transfer/CertificateNames.h"

#include <algorithm>
#include <array>
#include <ctime>
#include <iterator>
#include <utility>

namespace Transfer {
namespace {

int OwnerIndex() {
  static const int index = SSL_CTX_get_ex_new_index(0, nullptr, nullptr, nullptr, nullptr);
  return index;
}

bool IsFatal(int alert) {
  return (alert >> 8) == SSL3_AL_FATAL;
}

// Answers name a certificate by digests of their own choice.
bool Concerns(const OCSP_CERTID* id, const X509* certificate, const X509* issuer) {
  ASN1_OBJECT* algorithm = nullptr;
  OCSP_id_get0_info(nullptr, &algorithm, nullptr, nullptr, const_cast<OCSP_CERTID*>(id));
  const EVP_MD* const digest = EVP_get_digestbyobj(algorithm);
  if (digest == nullptr) return false;
  const OcspCertificateIdPtr own(OCSP_cert_to_id(digest, certificate, issuer));
  return own != nullptr && OCSP_id_cmp(own.get(), id) == 0;
}

// The answer's period of validity is left aside: what was revoked stays revoked.
bool SaysRevoked(OCSP_BASICRESP* answer, const X509* certificate, const X509* issuer) {
  for (int i = 0; i < OCSP_resp_count(answer); ++i) {
    OCSP_SINGLERESP* const single = OCSP_resp_get0(answer, i);
    if (!Concerns(OCSP_SINGLERESP_get0_id(single), certificate, issuer)) continue;
    if (OCSP_single_get0_status(single, nullptr, nullptr, nullptr, nullptr) == V_OCSP_CERTSTATUS_REVOKED)
      return true;
  }
  return false;
}

std::string Text(const ASN1_TIME* time) {
  std::tm parts{};
  std::array<char, sizeof "2026-11-22 13:05 UTC"> text{};
  if (ASN1_TIME_to_tm(time, &parts) != 1) return {};
  return {text.data(), std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M UTC", &parts)};
}

// The first few, of which there may be many.
std::string HostsOf(const X509* certificate) {
  constexpr std::size_t kMost = 3;
  std::vector<std::string> hosts = CertificateNames::Hosts(certificate);
  std::ranges::move(CertificateNames::Addresses(certificate), std::back_inserter(hosts));
  if (hosts.empty()) return CertificateNames::CommonName(certificate).value_or("");
  std::string text;
  for (std::size_t i = 0; i < std::min(hosts.size(), kMost); ++i) text += (i == 0 ? "" : ", ") + hosts[i];
  return hosts.size() > kMost ? text + ", ..." : text;
}

// `depth`: how many certificates stand below this one in the chain.
PeerProblem ProblemOf(int error, int depth, const X509* certificate) {
  using Kind = PeerProblem::Kind;
  switch (error) {
    case X509_V_ERR_CERT_HAS_EXPIRED:
      return {depth == 0 ? Kind::Expired : Kind::IssuerExpired, Text(X509_get0_notAfter(certificate))};
    case X509_V_ERR_CERT_NOT_YET_VALID:
      return {depth == 0 ? Kind::NotYetValid : Kind::IssuerNotYetValid,
              Text(X509_get0_notBefore(certificate))};
    case X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT:
    case X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT_LOCALLY:
    case X509_V_ERR_UNABLE_TO_VERIFY_LEAF_SIGNATURE:
    case X509_V_ERR_DEPTH_ZERO_SELF_SIGNED_CERT:
    case X509_V_ERR_SELF_SIGNED_CERT_IN_CHAIN:
      return {Kind::UnknownIssuer, CertificateNames::Issuer(certificate).value_or("")};
    case X509_V_ERR_CERT_REVOKED:
      return {Kind::Revoked};
    default:
      return {};
  }
}

// Without a certificate that was seen before, there is no cipher that both know.
bool MeansNoCommonProtocol(int alert, bool sawCertificate) {
  const int description = alert & 0xFF;
  return description == SSL_AD_PROTOCOL_VERSION || description == SSL_AD_INSUFFICIENT_SECURITY ||
         (description == SSL_AD_HANDSHAKE_FAILURE && !sawCertificate);
}

// Whether the alert that we send is for an old protocol. The alert alone does not tell: what is no TLS at all
// gets the same one.
bool RefusedProtocol() {
  const int reason = ERR_GET_REASON(ERR_peek_last_error());
  return reason == SSL_R_UNSUPPORTED_PROTOCOL || reason == SSL_R_LEGACY_SIGALG_DISALLOWED_OR_UNSUPPORTED;
}

}  // namespace

void PeerTrust::Watch(SSL_CTX* context) {
  context_ = context;
  chain_.reset();
  store_.reset();
  stapledAnswer_.clear();
  receivedFatalAlert_ = false;
  sawCertificate_ = false;
  problem_ = {};
  SSL_CTX_set_ex_data(context, OwnerIndex(), this);
  SSL_CTX_set_info_callback(context, Observe);
  SSL_CTX_set_verify(context, SSL_CTX_get_verify_mode(context), TakeVerification);
  SSL_CTX_set_tlsext_status_type(context, TLSEXT_STATUSTYPE_ocsp);
}

// A proxy's session has a context of its own and says nothing about the server behind it.
PeerTrust* PeerTrust::Of(const SSL* session) {
  SSL_CTX* const context = SSL_get_SSL_CTX(session);
  auto* const trust = static_cast<PeerTrust*>(SSL_CTX_get_ex_data(context, OwnerIndex()));
  return trust != nullptr && trust->context_ == context ? trust : nullptr;
}

void PeerTrust::TakeAlert(int where, int value) {
  if (where == SSL_CB_READ_ALERT && IsFatal(value)) {
    receivedFatalAlert_ = true;
    if (MeansNoCommonProtocol(value, sawCertificate_)) problem_ = {PeerProblem::Kind::NoCommonProtocol};
  }
  if (where == SSL_CB_WRITE_ALERT && IsFatal(value) && RefusedProtocol()) {
    problem_ = {PeerProblem::Kind::NoCommonProtocol};
  }
}

// The library's own verification decides; this only looks on.
int PeerTrust::TakeVerification(int isGood, X509_STORE_CTX* verification) noexcept {
  const auto* const session =
      static_cast<const SSL*>(X509_STORE_CTX_get_ex_data(verification, SSL_get_ex_data_X509_STORE_CTX_idx()));
  PeerTrust* const trust = session != nullptr ? Of(session) : nullptr;
  if (trust == nullptr) return isGood;
  trust->sawCertificate_ = true;
  const X509* const certificate = X509_STORE_CTX_get_current_cert(verification);
  if (isGood != 0 || certificate == nullptr) return isGood;
  try {
    trust->problem_ = ProblemOf(X509_STORE_CTX_get_error(verification),
                                X509_STORE_CTX_get_error_depth(verification), certificate);
  } catch (...) {
    trust->problem_ = {};
  }
  return isGood;
}

void PeerTrust::Observe(const SSL* session, int where, int value) noexcept {
  PeerTrust* const trust = Of(session);
  if (trust == nullptr) return;
  trust->TakeAlert(where, value);
  if (where != SSL_CB_HANDSHAKE_DONE) return;
  try {
    trust->TakeHandshake(const_cast<SSL*>(session));
  } catch (...) {
    trust->chain_.reset();
  }
}

void PeerTrust::TakeHandshake(SSL* session) {
  const unsigned char* answer = nullptr;
  const long length = SSL_get_tlsext_status_ocsp_resp(session, &answer);
  if (answer != nullptr && length > 0) stapledAnswer_.assign(answer, answer + length);
  store_ = Retain(SSL_CTX_get_cert_store(context_));
  STACK_OF(X509)* const verified = SSL_get0_verified_chain(session);
  if (verified != nullptr) chain_.reset(X509_chain_up_ref(verified));
}

bool PeerTrust::Evaluate() const {
  if (sk_X509_num(chain_.get()) <= 0) return false;
  const bool revoked = IsRevoked();
  ERR_clear_error();
  return !revoked;
}

PeerProblem PeerTrust::Problem(bool isVerified) const {
  if (problem_.kind != PeerProblem::Kind::None || !chain_) return problem_;
  // The chain is trusted, so what the transfer has found wrong is the name.
  if (!isVerified) return {PeerProblem::Kind::OtherHost, HostsOf(sk_X509_value(chain_.get(), 0))};
  return Evaluate() ? PeerProblem() : PeerProblem{PeerProblem::Kind::Revoked};
}

bool PeerTrust::IsRevoked() const {
  const unsigned char* bytes = stapledAnswer_.data();
  const OcspResponsePtr response(
      d2i_OCSP_RESPONSE(nullptr, &bytes, static_cast<long>(stapledAnswer_.size())));
  if (!response) return false;
  const OcspAnswerPtr answer(OCSP_response_get1_basic(response.get()));
  if (!answer || OCSP_basic_verify(answer.get(), chain_.get(), store_.get(), 0) != 1) return false;
  const X509* const certificate = sk_X509_value(chain_.get(), 0);
  const bool hasIssuer = sk_X509_num(chain_.get()) > 1;
  return SaysRevoked(answer.get(), certificate, hasIssuer ? sk_X509_value(chain_.get(), 1) : certificate);
}

}  // namespace Transfer
